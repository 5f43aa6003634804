#pragma once

#include "view/Gallery.h"
#include "view/PictureView.h"
#include "view/Session.h"
#include "view/StackPanel.h"
#include "view/Timeline.h"
#include "view/ToolPanel.h"
#include "view/ViewBar.h"

#include <QFileInfo>
#include <QMainWindow>

namespace view {

/// The window of the program.
class Window : public QMainWindow {
    Q_OBJECT

public:
    explicit Window(QWidget* parent = nullptr);
    ~Window() override;

    /// Opens a tool on clips; says why in the window, and gives false, where it cannot.
    bool Open(host::Registry& tool, const std::vector<std::string>& links);
    bool OpenFile(const QString& file); ///< at the main input, with the tool that is there
    bool LoadLook(const QString& file);
    /// Brings back the look of a program that was killed, if there is one.
    void Recover();

    Session& Work() { return session_; }
    PictureView& Picture() { return *picture_; }
    ControlPanel& Controls() { return panel_->Controls(); }

signals:
    /// A frame in full size is on the screen.
    void Settled();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void LayOut();
    QWidget* MakePicture();
    QWidget* MakeToolSide();
    QWidget* MakeTimeBar();
    void Connect();

    // Menus.
    struct Entry {
        const char* text;
        const char* shortcut;
        const char* tip;
        void (Window::*slot)();
    };
    QMenu* AddMenu(const QString& title, std::initializer_list<Entry> entries);
    QAction* AddAction(QMenu& menu, const Entry& entry);
    void MakeMenus();
    void FillRecent();
    void FillStyles();

    // What the menus do.
    void ChooseFile();
    void ChooseLook();
    void SaveLook();
    void SaveStyle();
    void CopyCommand();
    void RenderFiles();
    void Undo();
    void Redo();
    void AddTool();
    void SwitchTool();
    void MoveToolUp();
    void MoveToolDown();
    void RemoveTool();
    void ChooseNext();
    void ChoosePrevious();
    void ResetAll();
    void ChooseCacheSize();
    void Fit();
    void OneToOne();
    void ZoomIn();
    void ZoomOut();
    void ToggleBefore();
    void ToggleWipe();
    void ToggleHandles();
    void ToggleGallery();
    void ToggleTheme();
    void PlayOrStop();
    void StepOn();
    void StepBack();
    void ToFirst();
    void ToLast();
    void SetChannels(Channels channels);

    // What the session tells.
    void TakeSession();
    void TakeShot(const ShotPtr& shot);
    void RefreshTime();
    void RefreshControls();
    void Say(const QString& text);
    void SetShowing(const Showing& showing);

    void TakeStyle(const QFileInfo& file);
    bool MayLoseLook();
    QString StyleFolder() const;
    void KeepForRecovery();
    static QString RecoveryFile();
    void Remember(const QString& file);

    Session session_;
    StackPanel* stack_;
    Gallery* gallery_;
    QWidget* tools_ = nullptr; ///< the left side: stack and gallery
    PictureView* picture_;
    std::unique_ptr<PictureView> unseen_; ///< the same, where there is no OpenGL to show it with
    ToolPanel* panel_;
    ViewBar* bar_;
    Timeline* timeline_;
    QLabel *message_, *pixel_, *timing_;
    QMenu *recent_ = nullptr, *styles_ = nullptr;
    QAction *undo_ = nullptr, *redo_ = nullptr, *play_ = nullptr;
    QTimer recovery_; ///< runs while a change waits to be kept
};

} // namespace view
