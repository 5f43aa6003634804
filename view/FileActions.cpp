// What the menu File does.
#include "media/PlugIns.h"
#include "media/Settings.h"
#include "media/SettingsFile.h"
#include "view/Command.h"
#include "view/LookFile.h"
#include "view/RenderDialog.h"
#include "view/Sequence.h"
#include "view/Window.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QStandardPaths>

#include <nlohmann/json.hpp>

namespace view {

namespace {

constexpr int kRecent = 10;

} // namespace

void Window::ChooseFile() {
    QSettings settings;
    const QString file = QFileDialog::getOpenFileName(this, tr("Open a picture or a sequence"),
                                                      settings.value("folder").toString());
    if (file.isEmpty()) return;
    settings.setValue("folder", QFileInfo(file).path());
    OpenFile(file);
}

bool Window::OpenFile(const QString& file) {
    const QString clip = file == "sample:" ? file : SequenceOf(file);
    try {
        Say({});
        session_.OpenClip(clip.toStdString());
        Remember(clip);
        return true;
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
        return false;
    }
}

void Window::Remember(const QString& file) {
    QSettings settings;
    QStringList files = settings.value("recent").toStringList();
    files.removeAll(file);
    files.prepend(file);
    settings.setValue("recent", files.mid(0, kRecent));
}

void Window::FillRecent() {
    recent_->clear();
    for (const QString& file : QSettings().value("recent").toStringList())
        recent_->addAction(file, this, [this, file] { OpenFile(file); });
    recent_->addAction(tr("Sample clip"), this, [this] { OpenFile("sample:"); });
}

void Window::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void Window::dropEvent(QDropEvent* event) {
    for (const QUrl& url : event->mimeData()->urls()) {
        const QString file = url.toLocalFile();
        if (file.endsWith(".json"))
            LoadLook(file);
        else if (!file.isEmpty())
            OpenFile(file);
    }
}

// Looks.

bool Window::LoadLook(const QString& file) {
    try {
        Look& look = *session_.CurrentLook();
        Say({});
        TakeSavedLook(look, media::ReadSettingsFile(file.toStdString()), tr("load look"));
        look.MarkSaved();
        setWindowModified(false);
        return true;
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
        return false;
    }
}

void Window::Recover() {
    if (!QFile::exists(RecoveryFile())) return;
    try {
        const std::string clip =
            TakeSavedWork(*session_.CurrentLook(), media::ReadSettingsFile(RecoveryFile().toStdString()),
                          tr("recover look"));
        session_.OpenClip(clip);
        Say(tr("The look that was not saved has been recovered"));
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
    }
}

void Window::ChooseLook() {
    const QString file = QFileDialog::getOpenFileName(this, tr("Load look"), {}, tr("Looks (*.json)"));
    if (!file.isEmpty()) LoadLook(file);
}

void Window::SaveLook() {
    QString file = QFileDialog::getSaveFileName(this, tr("Save look"), "look.json", tr("Looks (*.json)"));
    if (file.isEmpty()) return;
    if (QFileInfo(file).suffix().isEmpty()) file += ".json";
    Look& look = *session_.CurrentLook();
    try {
        media::WriteSettingsFile(SavedLook(look), file.toStdString());
        look.MarkSaved();
        setWindowModified(false);
        Say(tr("Saved to %1").arg(file));
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
    }
}

QString Window::StyleFolder() const {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/styles/" +
           QString::fromStdString(media::PlainName(*session_.CurrentLook()->Op().Class()));
}

void Window::SaveStyle() {
    const QString name = QInputDialog::getText(this, tr("Save as style"), tr("Name:")).trimmed();
    if (name.isEmpty()) return;
    try {
        if (name.contains('/') || !QDir().mkpath(StyleFolder()))
            throw std::runtime_error(tr("'%1' is not a name for a style").arg(name).toStdString());
        media::WriteSettingsFile(media::SaveSettings(session_.CurrentLook()->Op()),
                                 (StyleFolder() + "/" + name + ".json").toStdString());
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
    }
}

void Window::TakeStyle(const QFileInfo& file) {
    try {
        Say({});
        view::TakeStyle(*session_.CurrentLook(), media::ReadSettingsFile(file.filePath().toStdString()),
                        tr("style %1").arg(file.completeBaseName()));
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
    }
}

void Window::FillStyles() {
    styles_->clear();
    for (const QFileInfo& file : QDir(StyleFolder()).entryInfoList({"*.json"}, QDir::Files))
        styles_->addAction(file.completeBaseName(), this, [this, file] { TakeStyle(file); });
    if (styles_->isEmpty()) styles_->addAction(tr("None saved for this tool"))->setEnabled(false);
}

// Rendering.

void Window::CopyCommand() {
    try {
        const QStringList words = RenderWords(session_.Clip(), session_.CurrentLook()->Layers(),
                                              RenderDialog::ProposedOutput(session_), {});
        QApplication::clipboard()->setText(ShellLine(words));
        Say(tr("The command is on the clipboard"));
    } catch (const std::exception& error) {
        Say(QString::fromUtf8(error.what()));
    }
}

void Window::RenderFiles() {
    auto* dialog = new RenderDialog(session_, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
}

// What would be lost.

bool Window::MayLoseLook() {
    if (!session_.CurrentLook() || !session_.CurrentLook()->Unsaved()) return true;
    const auto answer =
        QMessageBox::question(this, tr("Unsaved look"), tr("Save the look before it is gone?"),
                              QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel);
    if (answer == QMessageBox::Save) SaveLook();
    return answer == QMessageBox::Discard ||
           (answer == QMessageBox::Save && !session_.CurrentLook()->Unsaved());
}

void Window::closeEvent(QCloseEvent* event) {
    if (!MayLoseLook()) return event->ignore();
    QFile::remove(RecoveryFile());
    QSettings().setValue("window", saveGeometry());
    event->accept();
}

QString Window::RecoveryFile() {
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/recovered.json";
}

void Window::KeepForRecovery() {
    const Look* look = session_.CurrentLook();
    if (!look || !look->Unsaved()) return;
    try {
        QDir().mkpath(QFileInfo(RecoveryFile()).path());
        media::WriteSettingsFile(SavedWork(*look, session_.Clip()), RecoveryFile().toStdString());
    } catch (const std::exception&) {
        // the look is still there; a full disk is told of when it is saved
    }
}

} // namespace view
