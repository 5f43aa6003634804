#include "host/Tags.h"
#include "media/PictureFile.h"
#include "media/Settings.h"
#include "tests/view/Support.h"
#include "view/Command.h"
#include "view/NumberField.h"
#include "view/RenderDialog.h"

#include <QAction>
#include <QMenu>
#include <QTemporaryDir>

#include <map>
#include <random>

namespace view::test {
namespace {

/// One place of each input that can be dragged on the picture.
std::map<host::Input*, QPoint> PlacesOf(PictureView& picture) {
    std::map<host::Input*, QPoint> places;
    for (int y = 2; y < picture.height(); y += 4)
        for (int x = 2; x < picture.width(); x += 4)
            if (host::Input* input = picture.InputAt(QPointF(x, y))) places.emplace(input, QPoint(x, y));
    return places;
}

void DragBy(PictureView& picture, const QPoint& from, const QPoint& way) {
    QTest::mouseMove(&picture, from);
    QTest::mousePress(&picture, Qt::LeftButton, {}, from);
    for (int i = 1; i <= 4; ++i) {
        QMouseEvent move(QEvent::MouseMove, from + way * i / 4, picture.mapToGlobal(from + way * i / 4),
                         Qt::NoButton, Qt::LeftButton, {});
        QApplication::sendEvent(&picture, &move);
    }
    QTest::mouseRelease(&picture, Qt::LeftButton, {}, from + way);
}

TEST_F(InWindow, EveryWidgetOfEveryToolMovesItsControlAndCanBeTakenBack) {
    int withWidgets = 0;
    for (host::Registry* tool : media::Tools()) {
        SCOPED_TRACE(media::PlainName(*tool));
        Open(*tool);
        const std::map<host::Input*, QPoint> places = PlacesOf(Picture());
        withWidgets += !places.empty();
        const Values before = ValuesOf(TheLook().Op());
        for (const auto& [input, place] : places) {
            SCOPED_TRACE(input->Id());
            const host::Curve was = input->GetCurve();
            DragBy(Picture(), place, {24, -18});
            EXPECT_NE(input->GetCurve(), was);
            const Values after = ValuesOf(TheLook().Op());
            EXPECT_NE(after, before);
            TheLook().Undo();
            EXPECT_EQ(ValuesOf(TheLook().Op()), before);
            TheLook().Redo();
            EXPECT_EQ(ValuesOf(TheLook().Op()), after);
            TheLook().Undo();
        }
    }
    EXPECT_EQ(withWidgets, 6);
}

TEST_F(InWindow, ADragChangesThePicture) {
    Open("Flare2");
    const std::vector<float> before = PixelsOf(*Settled()->after);
    DragBy(Picture(), PlacesOf(Picture()).at(TheLook().Op().FindInput("XYSr")), {80, -40});
    EXPECT_TRUE(PixelsOf(*Settled()->after) != before);
    TheLook().Undo();
    EXPECT_TRUE(PixelsOf(*Settled()->after) == before);
}

TEST_F(InWindow, RenderedFilesAreWhatTheWindowShows) {
    const QTemporaryDir folder;
    Open("MoBlur"); // a style list that sets sliders, a slider set after it, and keys
    host::Operator& op = TheLook().Op();
    media::ApplySetting(op, "Prss=1");
    media::ApplySetting(op, "Maps=17.3");
    media::ApplySetting(op, "Blend=@0:0.25,20:1");
    TheLook().Tell();
    window.Work().ShowFrame(7);
    const ShotPtr shot = Settled();
    RenderDialog dialog(window.Work());
    const QString file = folder.filePath("it's.%04d.tif");
    dialog.SetOutput(file);
    dialog.SetFrames("7");
    QSignalSpy ended(&dialog, &RenderDialog::Ended);
    dialog.Start();
    ASSERT_TRUE(ended.wait(60000));
    ASSERT_EQ(ended[0][0].toInt(), 0);
    const media::Picture written = media::ReadPicture(folder.filePath("it's.0007.tif").toStdString());
    EXPECT_TRUE(PixelsOf(*written.image) == PixelsOf(*shot->after));
}

TEST_F(InWindow, APlayingClipGoesOnAndCanBeStopped) {
    Open("Clean");
    window.Work().ShowFrame(22);
    window.Work().Play(true);
    EXPECT_TRUE(QTest::qWaitFor([&] { return window.Work().Frame() == 1; }, 60000)); // beyond the end
    window.Work().Play(false);
    const int frame = window.Work().Frame();
    QTest::qWait(150);
    EXPECT_EQ(window.Work().Frame(), frame);
}

TEST_F(InWindow, WhatCannotBeOpenedIsToldAndChangesNothing) {
    Open("Clean");
    QTemporaryDir folder;
    QFile broken(folder.filePath("broken.png"));
    ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
    broken.write("no picture");
    broken.close();
    const Values before = ValuesOf(TheLook().Op());
    QSignalSpy problem(&window.Work(), &Session::Problem);
    window.OpenFile(broken.fileName()); // opens, but has no frame to show
    ASSERT_TRUE(problem.wait(10000));
    EXPECT_NE(problem[0][0].toString().indexOf("broken.png"), -1);
    EXPECT_FALSE(window.LoadLook(broken.fileName()));
    EXPECT_FALSE(window.LoadLook(folder.filePath("none.json")));
    EXPECT_EQ(ValuesOf(TheLook().Op()), before);
    EXPECT_TRUE(window.OpenFile("sample:"));
    EXPECT_NE(Settled(), nullptr);
}

TEST_F(InWindow, HostileTypingDoesNoHarm) {
    for (const char* tool : {"Flare2", "FlareSpot"}) {
        Open(tool);
        for (NumberField* field : window.Controls().findChildren<NumberField*>())
            for (const char* text : {"nan", "-inf", "1e300", "-1e9", "0x", "", "1,5", "  7  "}) {
                field->setFocus();
                field->clear();
                QTest::keyClicks(field, text);
                QTest::keyClick(field, Qt::Key_Return);
                QTest::keyClick(field, Qt::Key_Up, Qt::ShiftModifier);
            }
        Settled();
    }
}

TEST_F(InWindow, RandomActionsDoNoHarm) {
    std::mt19937 dice(7);
    const auto throwDie = [&](int sides) { return static_cast<int>(dice() % static_cast<unsigned>(sides)); };
    Open("Flare2");
    QList<QAction*> actions;
    for (QAction* action : window.findChildren<QAction*>())
        if (!action->menu() && !action->text().contains("...") && !action->text().contains("Quit"))
            actions << action;
    for (int i = 0; i < 400; ++i) {
        const QPoint at(throwDie(Picture().width()), throwDie(Picture().height()));
        switch (throwDie(5)) {
        case 0:
            actions[throwDie(static_cast<int>(actions.size()))]->trigger();
            break;
        case 1:
            DragBy(Picture(), at, {throwDie(200) - 100, throwDie(200) - 100});
            break;
        case 2:
            window.Work().ShowFrame(throwDie(40) - 8);
            break;
        case 3:
            if (i % 10 == 3)
                window.Open(*media::Tools()[static_cast<std::size_t>(throwDie(12))], {"sample:"});
            break;
        default:
            QTest::qWait(throwDie(8));
        }
    }
    window.Work().Play(false);
    EXPECT_NE(Settled(), nullptr);
}

} // namespace
} // namespace view::test
