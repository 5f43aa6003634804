#include "view/Window.h"

#include "host/Tags.h"
#include "media/PlugIns.h"

#include <QHBoxLayout>
#include <QSettings>
#include <QSplitter>
#include <QStatusBar>
#include <QToolButton>
#include <QVBoxLayout>

#include <set>

namespace view {

namespace {

constexpr int kRecoveryPause = 1000; ///< milliseconds from a change until it is kept

/// Frames at which any control has a key.
std::vector<int> KeysOf(const host::Operator& op) {
    std::set<int> frames;
    for (const host::Input* input : op.Inputs())
        if (input->DataType() == host::Input::Type::Number || input->DataType() == host::Input::Type::Point)
            for (const auto& [time, value] : input->GetCurve().Keys) frames.insert(static_cast<int>(time));
    return {frames.begin(), frames.end()};
}

} // namespace

Window::Window(QWidget* parent)
    : QMainWindow(parent)
    , stack_(new StackPanel(this))
    , gallery_(new Gallery(1, this))
    , picture_(new PictureView)
    , panel_(new ToolPanel(this))
    , bar_(new ViewBar(this))
    , timeline_(new Timeline(this))
    , message_(new QLabel(this))
    , pixel_(new QLabel(this))
    , timing_(new QLabel(this)) {
    setAcceptDrops(true);
    resize(1280, 800);
    MakeMenus();
    LayOut();
    Connect();
    const QSettings settings;
    restoreGeometry(settings.value("window").toByteArray());
    session_.Store().SetRoom(settings.value("cacheMiB", 1024).toULongLong() << 20);
}

Window::~Window() {
    picture_->SetLook(nullptr);
    panel_->SetLook(nullptr);
    stack_->SetLook(nullptr);
}

void Window::LayOut() {
    auto* middle = new QWidget(this);
    auto* column = new QVBoxLayout(middle);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(bar_);
    column->addWidget(MakePicture(), 1);
    column->addWidget(MakeTimeBar());

    auto* splitter = new QSplitter(this);
    splitter->addWidget(MakeToolSide());
    splitter->addWidget(middle);
    splitter->addWidget(panel_);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    splitter->setSizes({170, 740, 370});
    setCentralWidget(splitter);

    QFont fixed("monospace");
    fixed.setStyleHint(QFont::Monospace);
    pixel_->setFont(fixed);
    message_->setContentsMargins(12, 0, 0, 0);
    timing_->setContentsMargins(12, 0, 8, 0);
    statusBar()->setSizeGripEnabled(false);
    statusBar()->addWidget(message_, 1);
    statusBar()->addPermanentWidget(pixel_);
    statusBar()->addPermanentWidget(timing_);
}

QWidget* Window::MakePicture() {
    if (HasOpenGL()) return picture_;
    unseen_.reset(picture_);
    auto* line = new QLabel(tr("Pictures cannot be shown: there is no OpenGL here.\n"
                               "Looks can be made, saved and rendered."),
                            this);
    line->setObjectName("WithoutOpenGL");
    line->setAlignment(Qt::AlignCenter);
    return line;
}

QWidget* Window::MakeToolSide() {
    tools_ = new QWidget(this);
    auto* column = new QVBoxLayout(tools_);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    auto* title = new QLabel(tr("Tools"), tools_);
    title->setContentsMargins(10, 6, 4, 2);
    title->setToolTip(tr("A click puts the tool in place of the chosen one"));
    column->addWidget(stack_);
    column->addWidget(title);
    column->addWidget(gallery_, 1);
    return tools_;
}

QWidget* Window::MakeTimeBar() {
    auto* bar = new QWidget(this);
    auto* row = new QHBoxLayout(bar);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(2);
    const auto addButton = [&](const QString& text, const QString& tip, void (Window::*slot)()) {
        auto* button = new QToolButton(bar);
        button->setText(text);
        button->setToolTip(tip);
        button->setAccessibleName(tip);
        button->setAutoRaise(true);
        button->setFixedSize(30, 28);
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QToolButton::clicked, this, slot);
        row->addWidget(button);
        return button;
    };
    addButton("\u25C2\u2759", tr("Step back (Left)"), &Window::StepBack);
    QToolButton* play = addButton("\u25B6", tr("Play or stop (Space)"), &Window::PlayOrStop);
    addButton("\u2759\u25B8", tr("Step on (Right)"), &Window::StepOn);
    row->addWidget(timeline_, 1);
    connect(&session_, &Session::PlayingChanged, play,
            [play](bool on) { play->setText(on ? "\u25A0" : "\u25B6"); });
    return bar;
}

void Window::Connect() {
    connect(gallery_, &Gallery::Chosen, this, [this](host::Registry* tool) {
        if (Look* look = session_.CurrentLook()) look->Replace(*tool);
    });
    connect(&session_, &Session::Opened, this, &Window::TakeSession);
    connect(&session_, &Session::Changed, this, &Window::RefreshControls);
    connect(&session_, &Session::Shown, this, &Window::TakeShot);
    connect(&session_, &Session::Problem, this, &Window::Say);
    connect(timeline_, &Timeline::FrameAsked, &session_, &Session::ShowFrame);
    connect(picture_, &PictureView::Pointed, pixel_, &QLabel::setText);
    connect(picture_, &PictureView::ZoomChanged, bar_, &ViewBar::ShowZoom);
    connect(picture_, &PictureView::Failed, this, &Window::Say);
    connect(bar_, &ViewBar::ShowingChosen, this, [this](Showing showing) {
        showing.wipe = picture_->How().wipe;
        SetShowing(showing);
    });
    recovery_.setSingleShot(true);
    connect(&recovery_, &QTimer::timeout, this, &Window::KeepForRecovery);
}

bool Window::Open(host::Registry& tool, const std::vector<std::string>& links) {
    try {
        Say({});
        session_.Open(tool, links);
        return true;
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
        return false;
    }
}

void Window::TakeSession() {
    Look* look = session_.CurrentLook();
    picture_->SetLook(look);
    panel_->SetLook(look);
    stack_->SetLook(look);
    timeline_->SetSpan(session_.Span());
    RefreshControls();
}

void Window::TakeShot(const ShotPtr& shot) {
    Say({});
    picture_->Show(shot);
    panel_->Counts().Show(shot->after);
    const QString size = QString("%1 \u00D7 %2").arg(shot->before->Width).arg(shot->before->Height);
    const QString part = shot->divisor == 1 ? "" : tr(", at 1/%1 of the size").arg(shot->divisor);
    timing_->setText(tr("%1   %2 ms%3").arg(size).arg(shot->milliseconds, 0, 'f', 0).arg(part));
    RefreshTime();
    if (shot->divisor == 1) emit Settled();
}

void Window::RefreshTime() {
    timeline_->Show(session_.Frame(), session_.Store().Frames(), KeysOf(session_.CurrentLook()->Op()));
}

void Window::RefreshControls() {
    Look& look = *session_.CurrentLook();
    panel_->Refresh();
    picture_->Refresh();
    stack_->Refresh();
    gallery_->Mark(*look.Op().Class());
    RefreshTime();
    QStringList names;
    for (const Layer& layer : look.Layers())
        names << QString::fromStdString(media::PlainName(*layer.op->Class()));
    setWindowTitle(tr("%1 on %2[*] - k7view").arg(names.join(", "), QString::fromStdString(session_.Clip())));
    setWindowModified(look.Unsaved());
    if (!recovery_.isActive()) recovery_.start(kRecoveryPause);
    const auto name = [](QAction& action, const QString& verb, const std::string& title) {
        action.setText(title.empty() ? verb : verb + " " + QString::fromStdString(title));
        action.setEnabled(!title.empty());
    };
    name(*undo_, tr("&Undo"), look.Steps().BackTitle());
    name(*redo_, tr("&Redo"), look.Steps().ForwardTitle());
    if (session_.Rendering() && message_->text().isEmpty()) timing_->setText(tr("rendering\u2026"));
}

void Window::Say(const QString& text) {
    message_->setText(text.simplified());
    message_->setToolTip(text);
}

void Window::SetShowing(const Showing& showing) {
    picture_->SetShowing(showing);
    bar_->Show(showing);
}

} // namespace view
