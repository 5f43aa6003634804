#include "view/RenderDialog.h"

#include "media/FilePattern.h"
#include "media/PlugIns.h"
#include "view/Command.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QRegularExpression>

#include <algorithm>
#include <csignal>

namespace view {

namespace {

QString TimeText(qint64 seconds) {
    if (seconds < 60) return RenderDialog::tr("%1 s").arg(seconds);
    const qint64 minutes = (seconds + 59) / 60;
    if (minutes < 60) return RenderDialog::tr("%1 min").arg(minutes);
    return RenderDialog::tr("%1 h %2 min").arg(minutes / 60).arg(minutes % 60);
}

} // namespace

RenderDialog::RenderDialog(const Session& session, QWidget* parent)
    : QDialog(parent)
    , session_(session)
    , output_(new QLineEdit(ProposedOutput(session), this))
    , frames_(new QLineEdit(QString::fromStdString(media::Describe(session.Span())), this))
    , progress_(new QProgressBar(this))
    , state_(new QLabel(this))
    , messages_(new QPlainTextEdit(this))
    , start_(new QPushButton(tr("&Render"), this))
    , cancel_(new QPushButton(tr("&Close"), this)) {
    setWindowTitle(tr("Render"));
    resize(560, 320);
    LayOut();
    connect(start_, &QPushButton::clicked, this, &RenderDialog::Start);
    connect(cancel_, &QPushButton::clicked, this, &RenderDialog::Cancel);
    connect(&process_, &QProcess::readyReadStandardError, this, &RenderDialog::Read);
    connect(&process_, &QProcess::finished, this, &RenderDialog::Finish);
    connect(&process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) Finish(-1);
    });
}

RenderDialog::~RenderDialog() {
    process_.disconnect(this);
    if (process_.state() == QProcess::NotRunning) return;
    process_.terminate();
    process_.waitForFinished(3000);
}

void RenderDialog::LayOut() {
    auto* form = new QFormLayout(this);
    form->setContentsMargins(16, 16, 16, 16);
    form->setSpacing(10);
    output_->setToolTip(tr("Files to write; %04d stands for the frame's number"));
    frames_->setToolTip(tr("7, 1-100, 1-100x5, comma-separated"));
    form->addRow(tr("Files:"), output_);
    form->addRow(tr("Frames:"), frames_);
    progress_->setValue(0);
    form->addRow(progress_);
    form->addRow(state_);
    messages_->setReadOnly(true);
    messages_->setPlaceholderText(tr("Warnings and errors"));
    form->addRow(messages_);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancel_);
    buttons->addWidget(start_);
    form->addRow(buttons);
    start_->setDefault(true);
}

QString RenderDialog::ProposedOutput(const Session& session) {
    const QString clip = QString::fromStdString(session.Clip());
    QString tool;
    for (const Plan::Stage& stage : session.Tools().stages)
        tool += "_" + QString::fromStdString(media::PlainName(*stage.tool));
    const bool sequence = session.Span().first != session.Span().last;
    const QString number = sequence ? ".%04d" : "";
    if (clip == "sample:") return QDir::home().filePath("sample" + tool + number + ".exr");
    QString name = QFileInfo(clip).completeBaseName();
    name.remove(QRegularExpression("[._-]?(%0?\\d*d|#+|@+|\\$F\\d*)$"));
    return QFileInfo(clip).dir().filePath(name + tool + number + "." + QFileInfo(clip).suffix());
}

void RenderDialog::Start() {
    QStringList words;
    try {
        words =
            RenderWords(session_.Clip(), session_.CurrentLook()->Layers(), output_->text(), frames_->text());
    } catch (const std::exception& error) {
        return state_->setText(QString::fromUtf8(error.what()));
    }
    messages_->clear();
    progress_->setValue(0);
    start_->setEnabled(false);
    cancel_->setText(tr("&Cancel"));
    state_->setText(tr("Starting\u2026"));
    clock_.start();
    process_.start(QCoreApplication::applicationDirPath() + "/k7", words);
}

void RenderDialog::Read() {
    static const QRegularExpression rendered("^Rendered frame (-?\\d+) \\((\\d+) of (\\d+)\\)");
    while (process_.canReadLine() || process_.bytesAvailable()) {
        process_.setReadChannel(QProcess::StandardError);
        const QString line = QString::fromUtf8(process_.readLine()).trimmed();
        if (line.isEmpty()) break;
        const QRegularExpressionMatch match = rendered.match(line);
        if (!match.hasMatch()) {
            if (!line.startsWith("Render ")) messages_->appendPlainText(line);
            continue;
        }
        const int done = match.captured(2).toInt(), all = match.captured(3).toInt();
        progress_->setMaximum(all);
        progress_->setValue(done);
        const qint64 left = clock_.elapsed() * (all - done) / std::max(done, 1) / 1000;
        state_->setText(tr("Frame %1 is written, %2 of %3. About %4 left.")
                            .arg(match.captured(1))
                            .arg(done)
                            .arg(all)
                            .arg(TimeText(left)));
    }
}

void RenderDialog::Finish(int code) {
    if (code >= 0) Read();
    start_->setEnabled(true);
    cancel_->setText(tr("&Close"));
    state_->setText(code == 0     ? tr("All frames are written.")
                    : code == 130 ? tr("Stopped; finished frames are kept.")
                    : code < 0    ? tr("The program k7 is not beside this one.")
                                  : tr("Not all frames are written."));
    emit Ended(code);
}

void RenderDialog::Cancel() {
    if (process_.state() == QProcess::NotRunning) return reject();
    ::kill(static_cast<pid_t>(process_.processId()), SIGINT); // as Ctrl-C does: finished frames stay
}

} // namespace view
