#include "view/Window.h"

#include <QMenu>
#include <QMenuBar>

namespace view {

QAction* Window::AddAction(QMenu& menu, const Entry& entry) {
    QAction* action = menu.addAction(tr(entry.text), this, entry.slot);
    action->setShortcut(QKeySequence(entry.shortcut));
    action->setToolTip(tr(entry.tip));
    action->setStatusTip(tr(entry.tip));
    return action;
}

QMenu* Window::AddMenu(const QString& title, std::initializer_list<Entry> entries) {
    QMenu* menu = menuBar()->addMenu(title);
    menu->setToolTipsVisible(true);
    for (const Entry& entry : entries)
        if (entry.text)
            AddAction(*menu, entry);
        else
            menu->addSeparator();
    return menu;
}

void Window::MakeMenus() {
    constexpr Entry line = {};
    QMenu* file = AddMenu(
        tr("&File"),
        {{"&Open...", "Ctrl+O", "Opens a picture, or the sequence that it is a frame of",
          &Window::ChooseFile},
         line,
         {"&Load look...", "Ctrl+L", "Takes the controls from a file", &Window::ChooseLook},
         {"&Save look...", "Ctrl+S", "Writes the controls to a file, which k7 reads too", &Window::SaveLook},
         {"Save as s&tyle...", "Ctrl+Shift+S", "Keeps the controls under a name in the menu",
          &Window::SaveStyle},
         line,
         {"&Copy as k7 command", "Ctrl+Shift+C", "Puts the command that renders this on the clipboard",
          &Window::CopyCommand},
         {"&Render...", "Ctrl+R", "Renders frames to files", &Window::RenderFiles},
         line});
    recent_ = new QMenu(tr("Open r&ecent"), file);
    styles_ = new QMenu(tr("St&yles"), file);
    file->insertMenu(file->actions().at(1), recent_);
    file->insertMenu(file->actions().at(6), styles_);
    QAction* quit = file->addAction(tr("&Quit"), this, &QWidget::close);
    quit->setShortcut(QKeySequence("Ctrl+Q"));
    connect(recent_, &QMenu::aboutToShow, this, &Window::FillRecent);
    connect(styles_, &QMenu::aboutToShow, this, &Window::FillStyles);

    QMenu* edit = AddMenu(
        tr("&Edit"),
        {{"&Undo", "Ctrl+Z", "Takes the last change back", &Window::Undo},
         {"&Redo", "Ctrl+Shift+Z", "Makes the change again", &Window::Redo},
         line,
         {"Reset &all controls", "Ctrl+Backspace", "Gives every control its default", &Window::ResetAll},
         {"&Frame cache...", "Ctrl+,", "Memory for rendered frames", &Window::ChooseCacheSize}});
    undo_ = edit->actions().at(0);
    redo_ = edit->actions().at(1);

    AddMenu(
        tr("&Stack"),
        {{"&Add tool...", "Ins", "Adds a tool below the chosen one", &Window::AddTool},
         {"Switch &on or off", "X", "Leaves the chosen tool out, or takes it in again", &Window::SwitchTool},
         line,
         {"Move &up", "Ctrl+Up", "Moves the chosen tool up", &Window::MoveToolUp},
         {"Move &down", "Ctrl+Down", "Moves the chosen tool down", &Window::MoveToolDown},
         {"&Remove", "Ctrl+Del", "Removes the chosen tool", &Window::RemoveTool},
         line,
         {"Choose the &next", "PgDown", "Shows the controls of the next tool", &Window::ChooseNext},
         {"Choose the one &before", "PgUp", "Shows the controls of the tool before",
          &Window::ChoosePrevious}});

    QMenu* view =
        AddMenu(tr("&View"),
                {{"&Fit", "F", "All of the picture", &Window::Fit},
                 {"&1:1", "1", "A pixel of the screen for each of the picture", &Window::OneToOne},
                 {"Zoom &in", "+", "Twice as large", &Window::ZoomIn},
                 {"Zoom &out", "-", "Half as large", &Window::ZoomOut},
                 line,
                 {"&Before or after", "D", "Shows the source in place of the result", &Window::ToggleBefore},
                 {"&Wipe", "W", "Result on the left, source on the right of a line", &Window::ToggleWipe},
                 {"Wi&dgets", "H", "Shows or hides the tool's widgets", &Window::ToggleHandles},
                 line,
                 {"&Tools", "T", "Shows or hides the list of tools", &Window::ToggleGallery},
                 {"Light or dar&k", "Ctrl+T", "Colours of the window", &Window::ToggleTheme},
                 line});
    QMenu* channels = view->addMenu(tr("&Channels"));
    const char* const names[] = {"Colour", "Red", "Green", "Blue", "Alpha", "Luminance", "Over checks"};
    const char* const keys[] = {"C", "R", "G", "B", "A", "L", "K"};
    for (int i = 0; i < 7; ++i) {
        QAction* action =
            channels->addAction(tr(names[i]), this, [this, i] { SetChannels(static_cast<Channels>(i)); });
        action->setShortcut(QKeySequence(keys[i]));
    }

    AddMenu(tr("&Time"), {{"&Play or stop", "Space", "Plays the clip", &Window::PlayOrStop},
                          {"Step &on", "Right", "The next frame", &Window::StepOn},
                          {"Step &back", "Left", "The frame before", &Window::StepBack},
                          {"&First frame", "Home", "The first frame of the clip", &Window::ToFirst},
                          {"&Last frame", "End", "The last frame of the clip", &Window::ToLast}});
}

} // namespace view
