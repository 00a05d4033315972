#pragma once

#include "engine/job/Process.h"
#include "mainwindow/run/OutputFolderCheck.h"
#include "mainwindow/run/RunOutcome.h"
#include "mainwindow/run/RunRows.h"
#include "mainwindow/state/WindowParts.h"

#include <QHash>
#include <QList>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

namespace pagestack {

class DesktopRun;
class ListCommands;
class PlanLine;
class ProcessPanel;
class RunPlan;

/// One conversion run as the window sees it: the checks before it, the job on a thread of its own,
/// the sheet that covers the window, and what is left to do when the user closes that. Main thread.
class RunControl : public QObject
{
    Q_OBJECT

public:
    /// `settings` and `list` outlive it.
    RunControl(const WindowParts& parts, Settings& settings, ListCommands& list);
    ~RunControl() override;
    RunControl(const RunControl&) = delete;
    RunControl& operator=(const RunControl&) = delete;

    /// The job under way or ended; an empty one before the first run, null after Close.
    Process* process() const { return m_process.get(); }
    ProcessPanel& panel() const { return *m_panel; }

    /// A job runs that nobody has asked to end.
    bool isUnderWay() const;
    /// A run is under way, or has ended and is not closed yet.
    bool isOpen() const;
    /// Asks whether the run is to end with the program, and calls `end` then.
    void askBeforeItEnds(const std::function<void()>& end);

    void split();
    void cancelProcess();
    void viewLog();
    void closeProcess();

signals:
    /// The user is to choose an output folder.
    void outputFolderWanted();

private:
    /// What becomes of files at the targets of a run, as the user says once a session and output
    /// folder.
    enum class ExistingFiles {
        Numbered, ///< the outputs are
        Skipped,
        Replaced,
    };

    /// Of a run that was not begun, since there is something to be decided first: what to ask.
    struct Question
    {
        struct Answer
        {
            QString button;
            std::function<void()> take; ///< leads to the run that is begun then
        };
        QString text;
        QList<Answer> answers; ///< but Cancel; none: there is nothing to be done about it
    };

    void beginRun();
    void startRun(const std::optional<QList<OutputFile>>& outputs,
                  std::optional<ExistingFiles> decided = std::nullopt);
    void showPlan(const RunPlan& plan, Process& job);
    bool isPlanClear(Process& job, std::optional<ExistingFiles> decided,
                     std::optional<ExistingFiles> remembered);
    std::optional<Question> questionOf(const RunPlan& plan, Process& job,
                                       std::optional<ExistingFiles> decided,
                                       std::optional<ExistingFiles> remembered);
    Question clashQuestion(const RunPlan& plan, const Process& job);
    static void apply(ExistingFiles existing, Process& job, const Settings& settings);
    void ask();
    void askToStop(const QString& text, const QString& button, const std::function<void()>& stop);
    void leaveRun();
    void showEnd();
    void showFolder();
    void saveProblems();

    const WindowParts m_parts;
    Settings& m_settings;
    ListCommands& m_list;
    OutputFolderCheck m_folderCheck;
    std::unique_ptr<Process> m_process;
    std::unique_ptr<ProcessPanel> m_panel;
    std::unique_ptr<PlanLine> m_planLine;
    RunOutcome m_outcome;
    RunRows m_rows;
    std::unique_ptr<DesktopRun> m_desktopRun; ///< of the run under way, or of the last one
    QString
        m_outputFolder; ///< of the last run; that of the first output where they go beside sources
    bool m_isRunning = false; ///< from the start of the plan to the end of the job
    bool m_isAsking = false; ///< whether the run is to end
    std::optional<Question> m_question; ///< to be asked when the worker has ended
    QHash<QString, ExistingFiles> m_existing; ///< by output folder
};

} // namespace pagestack
