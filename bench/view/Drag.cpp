// How the window follows the hand. Flare2's source is led round the sample clip at full size with the mouse,
// then tools are added, chosen and so on. Prints the pictures shown in a second, and for how long the window
// was not free at most. Run it under an X server: xvfb-run -a -s "-screen 0 1600x1000x24"
// build/release/bin/view_drag
#include "media/PlugIns.h"
#include "view/Style.h"
#include "view/Window.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QSettings>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

namespace {

constexpr int kSeconds = 5;
constexpr int kMoves = 125; ///< of a mouse in a second

class Drag : public QObject {
public:
    explicit Drag(view::Window& window) : window_(window), picture_(window.Picture()) {
        connect(&window.Work(), &view::Session::Shown, this, [this](const view::ShotPtr& shot) {
            if (running_.isActive()) ++(shot->divisor == 1 ? whole_ : small_);
        });
        connect(&picture_, &QOpenGLWidget::frameSwapped, this, [this] { painted_ += running_.isActive(); });
        connect(&running_, &QTimer::timeout, this, &Drag::Move);
        connect(&beat_, &QTimer::timeout, this, [this] { longest_ = std::max(longest_, free_.restart()); });
    }

    void Start() {
        picture_.ZoomTo(1.0);
        picture_.grabFramebuffer();
        Send(QEvent::MouseButtonPress, Place(0.0), Qt::LeftButton);
        running_.start(1000 / kMoves);
        beat_.start(0);
        free_.start();
        clock_.start();
    }

private:
    QPointF Place(double turn) const {
        const double angle = 2.0 * 3.14159265358979 * turn;
        return picture_.PlaceOf({0.5 - 0.2 * std::cos(angle), 0.3 + 0.2 * std::sin(angle)});
    }
    void Send(QEvent::Type type, const QPointF& at, Qt::MouseButton button) {
        QMouseEvent event(type, at, picture_.mapToGlobal(at), button, Qt::LeftButton, {});
        QApplication::sendEvent(&picture_, &event);
    }
    void Move() {
        const double seconds = static_cast<double>(clock_.elapsed()) / 1000.0;
        if (seconds < kSeconds) return Send(QEvent::MouseMove, Place(seconds / 4.0), Qt::NoButton);
        running_.stop();
        Send(QEvent::MouseButtonRelease, Place(seconds / 4.0), Qt::LeftButton);
        std::printf(
            "drag: %.1f pictures a second at full size, %.1f smaller; %.1f paintings; at most %lld ms\n",
            whole_ / seconds, small_ / seconds, painted_ / seconds, static_cast<long long>(longest_));
        Act(0);
    }

    /// One action after the other, with time for what it sets off.
    void Act(std::size_t number) {
        view::Look& look = *window_.Work().CurrentLook();
        const std::pair<const char*, std::function<void()>> actions[] = {
            {"add FlareSpot", [&] { look.Add(media::FindTool("FlareSpot")); }},
            {"add MoBlur", [&] { look.Add(media::FindTool("MoBlur")); }},
            {"choose the first", [&] { look.Choose(0); }},
            {"undo", [&] { look.Undo(); }},
            {"another frame", [&] { window_.Work().ShowFrame(3); }},
            {"play", [&] { window_.Work().Play(true); }},
            {"open a clip", [&] { window_.OpenFile("sample:"); }},
            {"another size", [&] { window_.resize(1400, 900); }},
        };
        if (number == std::size(actions)) return QApplication::exit(); // quit() would ask about the look
        longest_ = 0;
        actions[number].second();
        QTimer::singleShot(800, this, [this, number, name = actions[number].first] {
            std::printf("%s: at most %lld ms\n", name, static_cast<long long>(longest_));
            Act(number + 1);
        });
    }

    view::Window& window_;
    view::PictureView& picture_;
    QTimer running_, beat_;
    QElapsedTimer clock_, free_;
    qint64 longest_ = 0;
    int whole_ = 0, small_ = 0, painted_ = 0;
};

} // namespace

int main(int count, char** words) {
    QStandardPaths::setTestModeEnabled(true);
    view::AskForOpenGL();
    QApplication program(count, words);
    QApplication::setApplicationName("k7view-bench");
    QSettings().clear();
    view::UseTheme(true);
    media::LoadPlugIns();
    view::Window window;
    window.resize(1280, 800);
    window.show();
    Drag drag(window);
    bool begun = false;
    QObject::connect(&window, &view::Window::Settled, &drag, [&] {
        if (!std::exchange(begun, true)) QTimer::singleShot(500, &drag, [&] { drag.Start(); });
    });
    window.Open(media::FindTool("Flare2"), {"sample:"});
    return QApplication::exec();
}
