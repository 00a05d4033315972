#pragma once

#include "engine/fleet/RunState.h"
#include "engine/plan/OutputFile.h"
#include "engine/sources/Sources.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <utility>
#include <vector>

namespace pagestack {

class Console;
class EventStream;
class Settings;
struct Options;
struct PlannedRun;

/// What a run is to convert: the sources of the command line or of a plan, without what a former
/// run did. Tells on the way what cannot be taken. Main thread.
class RunSources
{
public:
    /// A source that is not converted.
    struct LeftOut
    {
        QString path;
        qint64 line = 0; ///< of the plan
        QString pages {}; ///< as PageChoice reads them
        int pageCount = 0;
        QString reason {}; ///< null: a former run did it
    };

    /// All are borrowed; `planned` is null without a plan.
    RunSources(const Options& options, const PlannedRun* planned, Console& console)
        : m_options(options)
        , m_planned(planned)
        , m_console(console)
    {
    }

    /// False when there are none.
    bool lookUp();

    /// Counts the pages of every source; early at an end when a signal came, as the next two.
    void countPages();

    /// Names the outputs as the plan does, and leaves out what is not as it was planned. Throws
    /// OutputRefused when the plan has other names.
    void nameOutputs(const Settings& settings);

    /// Leaves out what `state` proves to be done. Reads it all.
    void leaveOutDone(const RunState& state, const Settings& settings);

    // One by one:
    const QList<Source>& sources() const { return m_sources; }
    const QList<OutputFile>& outputs() const { return m_outputs; }
    void setOutputs(const QList<OutputFile>& outputs) { m_outputs = outputs; }

    const std::vector<LeftOut>& leftOut() const { return m_leftOut; }
    /// Outputs of a former run that are to be replaced.
    const QSet<QString>& own() const { return m_own; }
    /// Outputs of a former run that are as it left them, where checksums of all are wanted.
    const std::vector<std::pair<QString, FileDigest>>& proven() const { return m_proven; }
    /// Of the command line, that are no source.
    int lostPaths() const { return m_lostPaths; }
    bool hasFailures() const { return m_hasFailures; }
    /// Whether one of these may be gone the next time.
    bool hasPassingFailures() const { return m_isPassing; }

    /// What of each source is to be converted, by path, as PageChoice reads it; of those left out
    /// too.
    QHash<QString, QString> choices() const;

    /// Gives all to `events`, which begins with them.
    void begin(EventStream& events, const Settings& settings, const QString& optionsDigest) const;

private:
    void addFault(const QString& shown, const QString& reason);
    void keepOnly(const std::vector<qsizetype>& left);

    const Options& m_options;
    const PlannedRun* m_planned;
    Console& m_console;
    QList<Source> m_sources;
    QList<OutputFile> m_outputs;
    QList<qint64> m_lines; ///< of the plan
    QHash<QString, QString>
        m_parts; ///< pages with those done before, of sources begun before, by path
    std::vector<LeftOut> m_leftOut;
    QSet<QString> m_own;
    std::vector<std::pair<QString, FileDigest>> m_proven;
    int m_lostPaths = 0;
    bool m_hasFailures = false;
    bool m_isPassing = false;
};

} // namespace pagestack
