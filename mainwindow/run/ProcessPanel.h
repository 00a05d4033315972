#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <QHash>
#include <QTimer>

#include <memory>

namespace Ui {
class ProcessPanel;
}

namespace pagestack {

class Process;

/// The sheet that covers the window during a run: current file and output, counts, time, a progress
/// bar that knows its end from the first page on, and at the end the final message and a list of
/// the problems. Main thread; it listens to a job that runs elsewhere.
class ProcessPanel : public QDialog
{
    Q_OBJECT

public:
    explicit ProcessPanel(QWidget* parent);
    ~ProcessPanel() override;
    ProcessPanel(const ProcessPanel&) = delete;
    ProcessPanel& operator=(const ProcessPanel&) = delete;

    /// Shows the state of `job`, which has not started yet and has `plannedPages` pages to convert.
    void follow(Process& job, qint64 plannedPages);
    /// Hides the sheet, and looks at the job no more.
    void stopFollowing();
    /// As the button; nothing when the run has ended.
    void cancel();
    /// The problems of each source, a line each, when the run has ended.
    QHash<QString, QString> problemsByFile() const;

    /// Says, when the run has ended, what came of it; `hasLeft`: some files were not converted.
    void showOutcome(const QString& headline, bool hasLeft);

signals:
    /// The folder of the outputs is to be opened.
    void folderRequested();
    /// Close, and only the files that were not converted stay ticked.
    void tickingRequested();
    /// The run has ended; the sheet stays until Close.
    void ended();
    /// The source at `path` is to be shown in the list of files.
    void fileRequested(const QString& path);
    void viewLogRequested();
    void cancelRequested();
    /// Escape or the like during the run: whether that means Cancel is to be asked.
    void cancelQuestioned();
    void closeRequested();

public slots:
    /// Escape and the window's close button: asks for Cancel while the job runs, then Close.
    void reject() override;

private:
    void showCounts();
    void showNames(bool isShown);
    void showTime();
    void showEnd();
    void showButtons(bool isRunning);
    void showProblems(bool isShown);
    void setPaused(bool isPaused);
    qint64 elapsedMs() const;
    QString remainingText() const;

    std::unique_ptr<Ui::ProcessPanel> m_ui;
    Process* m_job = nullptr; ///< not owned
    qint64 m_plannedPages = 0;
    qint64 m_donePages = 0;
    bool m_isCancelled = false;
    QElapsedTimer m_elapsed;
    QElapsedTimer m_pause; ///< valid while the run is paused
    qint64 m_pausedMs = 0; ///< by former pauses
    QTimer m_refresh; ///< labels follow at a readable pace, however fast pages go
};

} // namespace pagestack
