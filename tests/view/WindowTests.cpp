#include "host/Tags.h"
#include "media/PictureFile.h"
#include "media/Settings.h"
#include "media/SettingsFile.h"
#include "tests/view/Support.h"
#include "view/LookFile.h"
#include "view/NumberField.h"
#include "view/RenderDialog.h"

#include <QAction>
#include <QClipboard>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QProcess>
#include <QTemporaryDir>

#include <nlohmann/json.hpp>

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

TEST_F(InWindow, WhatADragLeavesIsWhatAFreshWindowShows) {
    Open("Flare"); // it draws streaks at random at its first frame, with what was set then
    media::ApplySetting(TheLook().Op(), "LMOn=0");
    TheLook().Tell();
    Settled();
    host::Input& radius = *TheLook().Op().FindInput("GloR");
    TheLook().Begin("drag");
    for (int i = 1; i <= 5; ++i) {
        TheLook().Write(radius, {40.0 + i, 0.0});
        QTest::qWait(60);
    }
    TheLook().End();
    const std::vector<float> dragged = PixelsOf(*Settled()->after);
    const nlohmann::json look = SavedLook(TheLook());
    Open("Flare");
    TakeSavedLook(TheLook(), look, "look");
    EXPECT_TRUE(PixelsOf(*Settled()->after) == dragged);
}

std::vector<float> PixelsIn(const QString& file) {
    return PixelsOf(*media::ReadPicture(file.toStdString()).image);
}

int RunK7(const QStringList& words) {
    return QProcess::execute(QCoreApplication::applicationDirPath() + "/k7", words);
}

/// Drops a file on the row of a control.
void DropOn(ControlPanel& panel, const QString& control, const QString& file) {
    QLineEdit* field = nullptr;
    for (QLineEdit* each : panel.findChildren<QLineEdit*>())
        if (each->accessibleName() == control) field = each;
    ASSERT_NE(field, nullptr);
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(file)});
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(field->parentWidget(), &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QApplication::sendEvent(field->parentWidget(), &drop);
}

TEST_F(InWindow, TheCopiedCommandAndTheDialogRenderWhatTheWindowShows) {
    const QTemporaryDir folder;
    ASSERT_EQ(RunK7({"render", "Clean", "-i", "sample:", "-s", "Blend=0", "-f", "6-8", "-o",
                     folder.filePath("it's a.%04d.tif"), "--quiet"}),
              0);
    Open("MoBlur"); // a style list that sets sliders, a slider set after it, and keys
    ASSERT_TRUE(window.OpenFile(folder.filePath("it's a.0007.tif")));
    for (const char* setting : {"Prss=1", "Maps=17.3", "Blend=@0:0.25,20:1"})
        media::ApplySetting(TheLook().Op(), setting);
    TheLook().Add(media::FindTool("Trace"));
    TheLook().SwitchOn(1, false);
    TheLook().Add(media::FindTool("Defocus"));
    media::ApplySetting(TheLook().Op(), "RadB=0.7");
    TheLook().Tell();
    const std::vector<float> everywhere = PixelsOf(*Settled()->after);
    DropOn(window.Controls(), "Effect Mask", folder.filePath("it's a.0006.tif")); // its sequence is taken
    const ShotPtr shot = Settled();
    EXPECT_TRUE(PixelsOf(*shot->after) != everywhere);
    ASSERT_EQ(shot->frame, 7);

    Action("Copy as k7 command")->trigger();
    const QString command = QApplication::clipboard()->text();
    const QString path = "PATH=" + QCoreApplication::applicationDirPath() + ":$PATH; ";
    ASSERT_EQ(QProcess::execute("sh", {"-c", path + command + " --quiet"}), 0) << qPrintable(command);
    EXPECT_TRUE(PixelsIn(folder.filePath("it's a_MoBlur_Defocus.0007.tif")) == PixelsOf(*shot->after));

    RenderDialog dialog(window.Work());
    dialog.SetOutput(folder.filePath("dialog.%d.tif"));
    dialog.SetFrames("7");
    QSignalSpy ended(&dialog, &RenderDialog::Ended);
    dialog.Start();
    ASSERT_TRUE(ended.wait(60000));
    ASSERT_EQ(ended[0][0].toInt(), 0);
    EXPECT_TRUE(PixelsIn(folder.filePath("dialog.7.tif")) == PixelsOf(*shot->after));
}

/// Clicks on a tool in the menu of the stack.
void AddFromMenu(const QString& tool) {
    auto* gallery = QApplication::activePopupWidget()->findChild<Gallery*>();
    ASSERT_NE(gallery, nullptr);
    const QListWidgetItem* item = gallery->findItems(tool, Qt::MatchExactly).at(0);
    QTest::mouseClick(gallery->viewport(), Qt::LeftButton, {}, gallery->visualItemRect(item).center());
}

TEST_F(InWindow, EveryChangeOfAStackCanBeTakenBackAndMadeAgain) {
    Open("Clean");
    const auto set = [&](const char* setting) {
        TheLook().Do(setting, [&] { media::ApplySetting(TheLook().Op(), setting); });
    };
    const std::function<void()> changes[] = {
        [&] { set("XRad=1"); },
        [&] { TheLook().Add(media::FindTool("Flare2")); },
        [&] { set("Stks=9"); },
        [&] {
            Action("Add tool")->trigger();
            AddFromMenu("Trace");
        },
        [&] {
            TheLook().Do("mask",
                         [&] { TheLook().WriteText(*TheLook().Op().FindInput("EffectMask"), "sample:"); });
        },
        [&] { Action("Move up")->trigger(); },
        [&] { Action("Switch on or off")->trigger(); },
        [&] { TheLook().Choose(0); },
        [&] { TheLook().Replace(media::FindTool("DBlur")); },
        [&] { Action("Remove")->trigger(); },
    };
    std::vector<StackState> states{StateOf(TheLook().Layers())};
    std::vector<std::vector<float>> pictures{PixelsOf(*Settled()->after)};
    for (const auto& change : changes) {
        change();
        if (StateOf(TheLook().Layers()) == states.back()) continue;
        states.push_back(StateOf(TheLook().Layers()));
        pictures.push_back(PixelsOf(*Settled()->after));
    }
    EXPECT_EQ(states.size(), 10U); // a tool that is chosen, and what comes without a step, are none
    const auto expect = [&](std::size_t i) {
        EXPECT_TRUE(StateOf(TheLook().Layers()) == states[i]) << i;
        EXPECT_TRUE(PixelsOf(*Settled()->after) == pictures[i]) << i;
        EXPECT_EQ(window.findChild<StackPanel*>()->findChild<QListWidget*>()->count(),
                  static_cast<int>(states[i].size()));
    };
    for (std::size_t i = states.size() - 1; i > 0; --i, Action("Undo")->trigger()) expect(i);
    for (std::size_t i = 0; i + 1 < states.size(); ++i, Action("Redo")->trigger()) expect(i);
}

TEST_F(InWindow, LooksOfStacksAreThoseOfK7) {
    const QTemporaryDir folder;
    const QString look = folder.filePath("look.json");
    ASSERT_EQ(RunK7({"render", "Clean", "-s", "XRad=1", "--then", "Flare2", "-s", "Stks=9", "-i", "sample:",
                     "-f", "11", "--save-settings", look, "-o", folder.filePath("a.tif"), "--quiet"}),
              0);
    Open("Trace");
    ASSERT_TRUE(window.LoadLook(look));
    ASSERT_EQ(TheLook().Layers().size(), 2U);
    EXPECT_TRUE(PixelsIn(folder.filePath("a.tif")) == PixelsOf(*Settled()->after));
    TheLook().Add(media::FindTool("Trace"));
    Action("Switch on or off")->trigger(); // which k7 leaves out then
    media::WriteSettingsFile(SavedLook(TheLook()), look.toStdString());
    ASSERT_EQ(RunK7({"render", "--settings", look, "-i", "sample:", "-f", "11", "-o",
                     folder.filePath("b.tif"), "--quiet"}),
              0);
    EXPECT_TRUE(PixelsIn(folder.filePath("b.tif")) == PixelsIn(folder.filePath("a.tif")));
    const StackState was = StateOf(TheLook().Layers());
    ASSERT_TRUE(window.LoadLook(look));
    ASSERT_EQ(TheLook().Layers().size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(StateOf(TheLook().Layers())[i].values, was[i].values);
        EXPECT_EQ(TheLook().Layers()[i].on, was[i].layer.on);
    }
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

host::Registry& AnyTool(int number) {
    return *media::Tools()[static_cast<std::size_t>(number)];
}

TEST_F(InWindow, RandomActionsDoNoHarm) {
    std::mt19937 dice(7);
    const auto throwDie = [&](int sides) { return static_cast<int>(dice() % static_cast<unsigned>(sides)); };
    Open("Flare2");
    QList<QAction*> actions;
    for (QAction* action : window.findChildren<QAction*>())
        if (!action->menu() && !action->text().contains("...") && !action->text().contains("Quit"))
            actions << action;
    for (int i = 0; i < 1000; ++i) {
        const QPoint at(throwDie(Picture().width()), throwDie(Picture().height()));
        switch (throwDie(6)) {
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
            if (i % 10 == 3) window.Open(AnyTool(throwDie(12)), {"sample:"});
            break;
        case 4:
            if (TheLook().Layers().size() < 4) TheLook().Add(AnyTool(throwDie(12)));
            TheLook().Choose(static_cast<std::size_t>(throwDie(4)));
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
