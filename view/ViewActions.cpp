// What the menus Edit, Stack, View and Time do.
#include "view/Style.h"
#include "view/Window.h"

#include <QInputDialog>
#include <QSettings>

namespace view {

void Window::Undo() {
    session_.CurrentLook()->Undo();
}

void Window::Redo() {
    session_.CurrentLook()->Redo();
}

void Window::AddTool() {
    stack_->OfferTools();
}

void Window::SwitchTool() {
    Look& look = *session_.CurrentLook();
    look.SwitchOn(look.Chosen(), !look.Layers()[look.Chosen()].on);
}

void Window::MoveToolUp() {
    session_.CurrentLook()->Move(-1);
}

void Window::MoveToolDown() {
    session_.CurrentLook()->Move(1);
}

void Window::RemoveTool() {
    session_.CurrentLook()->Remove();
}

void Window::ChooseNext() {
    session_.CurrentLook()->Choose(session_.CurrentLook()->Chosen() + 1);
}

void Window::ChoosePrevious() {
    session_.CurrentLook()->Choose(session_.CurrentLook()->Chosen() - 1);
}

void Window::ResetAll() {
    Look& look = *session_.CurrentLook();
    look.Do(tr("reset").toStdString(), [&] {
        const host::Ref<host::Operator> fresh(look.Op().Class()->NewOperator(nullptr));
        if (fresh) Restore(look.Op(), ValuesOf(*fresh));
    });
}

void Window::ChooseCacheSize() {
    QSettings settings;
    bool good = false;
    const int size = QInputDialog::getInt(this, tr("Frame cache"), tr("Memory for rendered frames, in MiB:"),
                                          settings.value("cacheMiB", 1024).toInt(), 16, 1 << 20, 64, &good);
    if (!good) return;
    settings.setValue("cacheMiB", size);
    session_.Store().SetRoom(static_cast<std::size_t>(size) << 20);
}

void Window::Fit() {
    picture_->Fit();
}

void Window::OneToOne() {
    picture_->ZoomTo(1.0);
}

void Window::ZoomIn() {
    picture_->ZoomTo(picture_->Zoom() * 2.0);
}

void Window::ZoomOut() {
    picture_->ZoomTo(picture_->Zoom() / 2.0);
}

void Window::ToggleBefore() {
    Showing showing = picture_->How();
    showing.wipe = showing.wipe > 0.0 ? 0.0 : 1.0;
    SetShowing(showing);
}

void Window::ToggleWipe() {
    Showing showing = picture_->How();
    showing.wipe = showing.wipe > 0.0 && showing.wipe < 1.0 ? 1.0 : 0.5;
    SetShowing(showing);
}

void Window::ToggleHandles() {
    picture_->ToggleHandles();
}

void Window::ToggleGallery() {
    tools_->setVisible(!tools_->isVisible());
}

void Window::ToggleTheme() {
    QSettings settings;
    const bool dark = !settings.value("dark", true).toBool();
    settings.setValue("dark", dark);
    UseTheme(dark);
}

void Window::PlayOrStop() {
    session_.Play(!session_.Playing());
}

void Window::StepOn() {
    session_.ShowFrame(session_.Frame() + 1);
}

void Window::StepBack() {
    session_.ShowFrame(session_.Frame() - 1);
}

void Window::ToFirst() {
    session_.ShowFrame(session_.Span().first);
}

void Window::ToLast() {
    session_.ShowFrame(session_.Span().last);
}

void Window::SetChannels(Channels channels) {
    Showing showing = picture_->How();
    showing.channels = channels;
    SetShowing(showing);
}

} // namespace view
