#pragma once

#include "engine/job/Process.h"
#include "mainwindow/state/WindowParts.h"

#include <QList>
#include <QObject>

#include <memory>
#include <optional>

namespace pagestack {

class ListCommands;
class ProcessPanel;

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

    void split();
    void cancelProcess();
    void viewLog();
    void closeProcess();

signals:
    /// The user is to choose an output folder.
    void outputFolderWanted();

private:
    /// Of a run that was not begun, since some of its outputs would end in one file: what to ask.
    struct Clash
    {
        QString question;
        QList<OutputFile> numbered; ///< the outputs that would not; none where numbers are no help
    };

    void checkOutputFolder();
    void refuse(const QString& text);
    void beginRun();
    void startRun(const QList<OutputFile>& outputs, bool isPlanned);
    bool isPlanClear(Process& job);
    void askForNumbers();
    void leaveRun();

    const WindowParts m_parts;
    Settings& m_settings;
    ListCommands& m_list;
    std::unique_ptr<Process> m_process;
    std::unique_ptr<ProcessPanel> m_panel;
    std::optional<Clash> m_clash; ///< to be asked when the worker has ended
};

} // namespace pagestack
