#pragma once

#include "view/Session.h"

#include <QDialog>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>

namespace view {

/// Renders frames to files with `k7 render` in a process of its own, so that files, warnings and errors are
/// the same, and the window stays free.
class RenderDialog : public QDialog {
    Q_OBJECT

public:
    explicit RenderDialog(const Session& session, QWidget* parent = nullptr);
    ~RenderDialog() override;

    /// Beside the clip, named after clip and tool.
    static QString ProposedOutput(const Session& session);

    void SetOutput(const QString& output) { output_->setText(output); }
    void SetFrames(const QString& frames) { frames_->setText(frames); }
    void Start();

signals:
    void Ended(int exitCode);

private:
    void LayOut();
    void Read();
    void Finish(int code);
    void Cancel();

    const Session& session_;
    QProcess process_;
    QElapsedTimer clock_;
    QLineEdit *output_, *frames_;
    QProgressBar* progress_;
    QLabel* state_;
    QPlainTextEdit* messages_;
    QPushButton *start_, *cancel_;
};

} // namespace view
