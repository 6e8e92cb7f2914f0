#pragma once
// The progress window `frmProcessing`: a small modal window that runs one
// long operation (unpacking a master database, building a job) named by the
// program's pending operation. The work runs on a worker thread; the window
// shows the caption of each stage the work reports, a bar that advances
// through the stages it was told to expect, and a Cancel button that sets
// the work's cancel flag. The window closes itself when the work returns.

#include <QDialog>
#include <QStringList>

#include <atomic>
#include <functional>
#include <string>

class QLabel;
class QProgressBar;
class QPushButton;

namespace qarvel::app {

class ProgressWindow : public QDialog {
    Q_OBJECT

public:
    // Reports the caption of the stage that starts ("Scanning FM Stations").
    using Progress = std::function<void(const std::string& caption)>;
    // The work: runs on a worker thread, reports through `progress` (from
    // that thread) and stops early when `cancel` becomes true. Its result
    // is Run's result.
    using Work = std::function<bool(const Progress& progress, const std::atomic<bool>& cancel)>;

    explicit ProgressWindow(QWidget* parent = nullptr);
    ~ProgressWindow() override;

    // Shows the window modally for `operation` (the pending operation's
    // name, the window's title) while `work` runs; the bar counts through
    // `stages` (a caption not among them leaves the bar busy). Without
    // `cancellable` the Cancel button is disabled, as for work that cannot
    // stop halfway. Returns the work's result.
    bool Run(const QString& operation, const QStringList& stages, const Work& work, bool cancellable);

    // True when the user pressed Cancel during the last Run.
    bool Cancelled() const { return m_cancel.load(); }
    // The captions reported during the last Run, in order.
    const QStringList& Captions() const { return m_captions; }

public slots:
    // Cancel or closing the window: asks the work to stop. The window stays
    // until the work has returned, so nothing is left half-done behind it.
    void reject() override;

private slots:
    void ShowCaption(const QString& caption);

private:
    QLabel* m_caption;
    QProgressBar* m_bar;
    QPushButton* m_cancelButton;
    QStringList m_stages;
    QStringList m_captions;
    std::atomic<bool> m_cancel{false};
    bool m_cancellable = false;
    bool m_running = false;
};

}  // namespace qarvel::app
