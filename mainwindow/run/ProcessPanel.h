#pragma once

#include "mainwindow/run/RunProgress.h"

#include <QDialog>
#include <QPointer>
#include <QTimer>

#include <memory>

namespace Ui {
class ProcessPanel;
}

namespace pagestack {

class Process;
class RunStrip;

/// The sheet over the window during a run: current file and output, counts, time, a progress
/// bar that knows its end from the first page on, and at the end the final message and a list of
/// the problems. Made small it is hidden, and a line at the bottom of the window stands for it.
/// It is not modal, since the desktop closes no window that is behind a modal one.
/// Main thread; it listens to a job that runs elsewhere.
class ProcessPanel : public QDialog
{
    Q_OBJECT

public:
    /// The line that stands for it fills `strip`, of the window.
    ProcessPanel(QWidget* window, QWidget& strip);
    ~ProcessPanel() override;
    ProcessPanel(const ProcessPanel&) = delete;
    ProcessPanel& operator=(const ProcessPanel&) = delete;

    /// Shows the state of `job`, which has not started yet.
    void follow(Process& job);
    /// Says what the job has to do, and in a few words what comes of it.
    void setPlanned(const RunWork& planned, const QString& text);
    /// Hides the sheet and its line, and looks at the job no more.
    void stopFollowing();
    /// As the button; nothing when the run has ended.
    void cancel();
    /// Whether the line at the bottom of the window stands for the sheet. Not for long: the next
    /// run begins with the sheet.
    bool isSmall() const { return m_isSmall; }
    bool isFollowing() const { return !m_job.isNull(); } ///< from follow() to stopFollowing()
    void setSmall(bool isSmall);

    /// The problems as text, a line each.
    QString problems() const;

    /// Says, when the run has ended, what came of it; `hasLeft`: some files were not converted.
    /// Unless all files were (`isAll`), nothing says so.
    void showOutcome(const QString& headline, bool hasLeft, bool isAll);

signals:
    /// The sheet has made way for the list, or has come back.
    void isSmallChanged(bool isSmall);
    /// A few times a second during the run: the part of it that is done, 0..1.
    void progressed(double fraction);
    /// The folder of the outputs is to be opened.
    void folderRequested();
    /// The problems are to be saved in a file.
    void savingRequested();
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
    void connectButtons();
    void showCounts();
    void showNames(bool isShown);
    void showTime();
    void showStrip();
    void showEnd();
    void showButtons(bool isRunning);
    void showProblems(bool isShown);
    void setPaused(bool isPaused);
    QString stateText() const;

    std::unique_ptr<Ui::ProcessPanel> m_ui;
    RunStrip* m_strip; ///< the window's
    QPointer<Process> m_job; ///< null when it is gone, too
    RunProgress m_progress;
    bool m_isCancelled = false;
    bool m_isSmall = false;
    QTimer m_refresh; ///< labels follow at a readable pace, however fast pages go
};

} // namespace pagestack
