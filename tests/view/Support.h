#pragma once

#include "media/PlugIns.h"
#include "view/Window.h"

#include <QAction>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace view::test {

/// A window with a tool on the sample clip.
class InWindow : public testing::Test {
protected:
    InWindow() {
        QSettings().clear();
        window.resize(1200, 760);
        window.show();
    }

    void Open(host::Registry& tool) {
        QSignalSpy settled(&window, &Window::Settled);
        ASSERT_TRUE(window.Open(tool, {"sample:"}));
        ASSERT_TRUE(settled.wait(30000));
        Picture().grabFramebuffer(); // widgets can be grabbed once they have been drawn
    }
    void Open(const char* tool) { Open(media::FindTool(tool)); }

    /// The frame of the look as it is, in full size.
    ShotPtr Settled() {
        EXPECT_TRUE(QTest::qWaitFor([&] { return Stored() != nullptr; }, 30000));
        return Stored();
    }
    ShotPtr Stored() { return window.Work().Store().Find(window.Work().Frame()); }

    /// An entry of the menus, by its text without marks.
    QAction* Action(const QString& text) {
        for (QAction* action : window.findChildren<QAction*>())
            if (action->text().remove('&').startsWith(text)) return action;
        throw std::runtime_error("no action " + text.toStdString());
    }

    Look& TheLook() { return *window.Work().CurrentLook(); }
    PictureView& Picture() { return window.Picture(); }

    Window window;
};

inline std::vector<float> PixelsOf(const host::Image& image) {
    const std::size_t row = 4 * static_cast<std::size_t>(image.Width);
    std::vector<float> pixels(row * static_cast<std::size_t>(image.Height));
    for (int y = 0; y < image.Height; ++y) image.ReadRow(y, &pixels[row * static_cast<std::size_t>(y)]);
    return pixels;
}

} // namespace view::test
