#pragma once

#include "engine/options/RunOptions.h"
#include "engine/plan/OutputFile.h"
#include "engine/support/Pause.h"
#include "mainwindow/state/WindowParts.h"

#include <QList>
#include <QObject>

#include <atomic>
#include <memory>

namespace pagestack {

class Settings;
class WorkerThread;

/// The line above Convert, which says all the time what a run would write: "4,880 images -> /out,
/// 12 exist, 2 clash". The number of images is there a moment after the list or the options came to
/// rest; what they come upon is looked up by a thread of its own. Main thread.
class PlanLine : public QObject
{
    Q_OBJECT

public:
    /// More is counted, but not looked up: a plan of everything would take much memory and time
    /// while nobody has asked for it. Convert asks it in any case.
    static constexpr qint64 mostFiles = 20'000;
    static constexpr qint64 mostImages = 50'000;

    /// `settings` outlive it. The pane of the window is bound to them.
    PlanLine(const WindowParts& parts, Settings& settings);
    ~PlanLine() override;
    PlanLine(const PlanLine&) = delete;
    PlanLine& operator=(const PlanLine&) = delete;

private:
    /// What its thread and it share.
    struct LookUp
    {
        std::atomic<bool> isWanted = true; ///< written here, read by the thread
        QString findings; ///< written by the thread before it ends
    };

    void follow();
    void forget();
    void count();
    void lookUp(const QList<OutputFile>& outputs);
    void show(qint64 images, const QString& findings);

    const WindowParts m_parts;
    Settings& m_settings;
    Pause m_rest;
    std::unique_ptr<WorkerThread> m_thread; ///< null when nothing is looked up
    std::shared_ptr<LookUp> m_lookUp; ///< null: the last one is not wanted any more
    qint64 m_images = 0;
    const QString m_purpose; ///< what Convert does, whatever the list holds
};

} // namespace pagestack
