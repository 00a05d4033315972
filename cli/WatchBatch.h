#pragma once

#include "cli/EventStream.h"
#include "cli/Report.h"
#include "engine/files/FileState.h"
#include "engine/fleet/WatchJournal.h"
#include "engine/plan/OutputFile.h"
#include "engine/sources/Sources.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <optional>
#include <vector>

namespace pagestack {

class Console;
class Process;
class RunPlan;
class Settings;
class Signals;
struct Options;

/// A complete file of a watched folder.
struct WatchedSource
{
    Source source;
    FileState state;
    std::optional<WatchJournal::Known>
        before {}; ///< it was begun, and is the same; none: it is new
};

/// What became of it.
struct WatchedResult
{
    enum class Outcome {
        Done,
        Failed,
        TryAgain, ///< something stood in the way that may pass
        NotReached, ///< it is as it was
    };
    Outcome outcome = Outcome::NotReached;
    QStringList reasons {}; ///< of failures, a line each
    QStringList outputs {}; ///< paths
    bool wantsRoom = false; ///< others would fail as well
};

/// One run over files of a watched folder: all new, or all begun before, whose outputs then get
/// the names that they had. Notes in the journal what is begun and done. Main thread; once.
class WatchBatch
{
public:
    /// All are borrowed.
    WatchBatch(const Options& options, Settings& settings, WatchJournal& journal, Console& console)
        : m_options(options)
        , m_settings(settings)
        , m_journal(journal)
        , m_console(console)
    {
    }

    /// Which lines about sources are printed.
    void setFilter(const Report::Filter& filter) { m_isPrinted = filter; }

    /// Of each of `items`. `signalsCaught` end the run after the page in hand.
    std::vector<WatchedResult> carryOut(const QList<WatchedSource>& items,
                                        const Signals& signalsCaught);

private:
    void nameOutputs(const QList<WatchedSource>& items);
    std::vector<qsizetype> judge(const RunPlan& plan, const QList<WatchedSource>& items);
    void refuse(qsizetype item, WatchedResult::Outcome outcome, const QString& reason,
                const Source& source);
    void run(const QList<Source>& sources, const Signals& signalsCaught);
    void take(const QJsonObject& event, Process& job);
    void takeOutcome(const QJsonObject& event, WatchedResult& result, Process& job);
    QJsonObject begun(QJsonObject event, qsizetype item) const;
    bool isWanted(const QString& outputPath) const;

    const Options& m_options;
    Settings& m_settings;
    WatchJournal& m_journal;
    Console& m_console;
    Report::Filter m_isPrinted;
    QList<OutputFile> m_outputs; ///< that are converted
    QList<FileState> m_states;
    QSet<QString> m_own; ///< outputs that may be replaced
    QHash<QString, qsizetype> m_items; ///< by path
    std::vector<WatchedResult> m_results;
    std::optional<EventStream> m_events; ///< of the run
    QString m_fault; ///< why nothing more can be noted; null: it can
    std::atomic<bool> m_isNoted = true; ///< written by the job's thread
};

} // namespace pagestack
