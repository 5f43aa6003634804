#include "media/Settings.h"
#include "tests/view/Support.h"
#include "view/ControlRow.h"
#include "view/NumberField.h"
#include "view/Timeline.h"

#include <QComboBox>
#include <QDir>
#include <QInputDialog>
#include <QMenu>
#include <QProcess>
#include <QStandardPaths>

#include <csignal>

namespace view::test {
namespace {

/// Runs a test of this program that is disabled, in a process of its own.
class Child : public QProcess {
public:
    explicit Child(const QString& test, const QProcessEnvironment& environment) {
        setProcessEnvironment(environment);
        setProcessChannelMode(ForwardedErrorChannel);
        start(QCoreApplication::applicationFilePath(),
              {"--gtest_also_run_disabled_tests", "--gtest_filter=" + test});
    }
};

QString RecoveryFile() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/recovered.json";
}

TEST_F(InWindow, DISABLED_IsKilledAfterAChange) {
    Open("Clean");
    TheLook().Add(media::FindTool("Defocus"));
    TheLook().Do("radius", [&] { media::ApplySetting(TheLook().Op(), "RadB=0.625"); });
    TheLook().Do("mask", [&] { TheLook().WriteText(*TheLook().Op().FindInput("EffectMask"), "sample:"); });
    EXPECT_TRUE(QTest::qWaitFor([] { return QFile::exists(RecoveryFile()); }, 20000));
    ::raise(SIGKILL);
}

TEST_F(InWindow, AStackIsRecoveredAfterAKill) {
    QFile::remove(RecoveryFile());
    Child child("*DISABLED_IsKilledAfterAChange", QProcessEnvironment::systemEnvironment());
    ASSERT_TRUE(child.waitForFinished(60000));
    ASSERT_EQ(child.exitStatus(), QProcess::CrashExit);
    Open("Trace");
    window.Recover();
    ASSERT_EQ(TheLook().Layers().size(), 2U);
    TheLook().Choose(1);
    EXPECT_EQ(TheLook().ValueOf(*TheLook().Op().FindInput("RadB")).x, 0.625);
    EXPECT_EQ(TheLook().TextOf(*TheLook().Op().FindInput("EffectMask")), "sample:");
    EXPECT_TRUE(TheLook().Unsaved());
    EXPECT_NE(Settled(), nullptr);
    QFile::remove(RecoveryFile());
}

TEST_F(InWindow, DISABLED_StandsWithoutOpenGL) {
    window.Open(media::FindTool("Flare2"), {"sample:"});
    auto* line = window.findChild<QLabel*>("WithoutOpenGL");
    ASSERT_NE(line, nullptr);
    EXPECT_TRUE(line->isVisible());
    TheLook().Add(media::FindTool("Clean"));
    EXPECT_NE(Settled(), nullptr);
    for (const char* action : {"Wipe", "Widgets", "Fit", "1:1", "Light or dark", "Undo"})
        Action(action)->trigger();
    EXPECT_FALSE(window.grab().isNull());
}

TEST(WithoutOpenGL, ALineTellsOfItAndAllElseWorks) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.remove("DISPLAY");
    Child child("*DISABLED_StandsWithoutOpenGL", environment);
    ASSERT_TRUE(child.waitForFinished(60000));
    EXPECT_EQ(child.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(child.exitCode(), 0) << child.readAllStandardOutput().constData();
}

/// The row of a control, by the accessible name of its editor.
template <class Editor>
Editor* EditorOf(ControlPanel& panel, const QString& control) {
    for (Editor* editor : panel.findChildren<Editor*>())
        if (editor->accessibleName() == control) return editor;
    return nullptr;
}

/// Chooses an entry of the menu that a control's label opens.
void ChooseInMenu(QWidget& editor, const QString& entry) {
    QTimer::singleShot(0, &editor, [entry] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (QAction* action : menu->actions())
            if (action->text() == entry) menu->setActiveAction(action);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    emit editor.parentWidget()->customContextMenuRequested({2, 2});
}

TEST_F(InWindow, KeysAreSetMovedBetweenAndRemoved) {
    Open("Clean");
    const auto field = [&] { return EditorOf<NumberField>(window.Controls(), "Horizontal Radius"); };
    const auto type = [&](const char* text) {
        field()->setFocus();
        field()->selectAll();
        QTest::keyClicks(field(), text);
        QTest::keyClick(field(), Qt::Key_Return);
    };
    window.Work().ShowFrame(2);
    type("4");
    ChooseInMenu(*field(), "Set key");
    window.Work().ShowFrame(10);
    type("20"); // of a control that is animated: a key
    const host::Curve curve = TheLook().Op().FindInput("XRad")->GetCurve();
    EXPECT_EQ(curve.Keys.size(), 2U);
    window.Work().ShowFrame(6);
    EXPECT_EQ(field()->Value(), 12.0);
    window.Work().ShowFrame(2);
    ChooseInMenu(*field(), "Remove key");
    window.Work().ShowFrame(6);
    EXPECT_EQ(field()->Value(), 20.0);
    TheLook().Undo();
    EXPECT_EQ(TheLook().Op().FindInput("XRad")->GetCurve(), curve);
}

TEST_F(InWindow, AStyleGivesTheChosenToolItsControlsAndNoOther) {
    Open("Clean");
    QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/styles").removeRecursively();
    TheLook().Do("radius", [&] { media::ApplySetting(TheLook().Op(), "XRad=17"); });
    QTimer::singleShot(0, &window, [] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->setTextValue("my style");
        dialog->accept();
    });
    Action("Save as style")->trigger();
    TheLook().Undo();
    TheLook().Add(media::FindTool("Clean"));
    emit Action("Styles")->menu()->aboutToShow();
    Action("my style")->trigger();
    EXPECT_EQ(TheLook().ValueOf(*TheLook().Layers()[0].op->FindInput("XRad")).x, 2.0);
    EXPECT_EQ(TheLook().ValueOf(*TheLook().Layers()[1].op->FindInput("XRad")).x, 17.0);
    emit Action("Styles")->menu()->aboutToShow();
    TheLook().Replace(media::FindTool("Trace"));
    emit Action("Styles")->menu()->aboutToShow();
    EXPECT_THROW(Action("my style"), std::runtime_error);
}

} // namespace
} // namespace view::test
