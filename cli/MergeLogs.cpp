#include "cli/MergeLogs.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/LogCopy.h"
#include "cli/Options.h"
#include "cli/Preflight.h"
#include "engine/files/FileState.h"
#include "engine/files/StagedFile.h"
#include "engine/files/StagedNames.h"
#include "engine/fleet/JsonLines.h"
#include "engine/fleet/MergeSummary.h"
#include "engine/fleet/MergedLog.h"
#include "engine/fleet/OutputCheck.h"
#include "engine/fleet/PlanMaker.h"
#include "engine/log/Log.h"
#include "engine/support/Paths.h"
#include "engine/support/Signals.h"
#include "engine/threads/StopScope.h"

#include <QFile>
#include <QSet>

#include <algorithm>
#include <optional>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    class Merging
    {
    public:
        Merging(const Options& options, Console& console);
        ExitCode carryOut();

    private:
        void refuseToReplace(const QString& path, const QString& what) const;
        void removeLeftovers() const;
        void takeSource(const MergedSource& source);
        void noteUnfinished(const MergedSource& source);
        void tell(ExitCode code);
        void trouble(const QString& line);
        void writeLog();

        const Options& m_options;
        Console& m_console;
        std::optional<LogCopy> m_logCopy;
        std::optional<StagedFile> m_unfinished; ///< the list of what is to be done again
        QStringList m_written; ///< paths of the two
        QSet<QByteArray> m_stagedSources; ///< sources whose names are those of files in work
        MergeSummary m_summary;
        OutputCheck m_check;
        std::optional<MergedRun> m_run;
        Log m_log;
        bool m_hasTroubles = false;
    };

    Merging::Merging(const Options& options, Console& console)
        : m_options(options)
        , m_console(console)
    {
        for (const QString& path : { options.logFile, options.failedFile })
            if (!path.isEmpty() && !LogCopy::isStandardOutput(path))
                m_written.append(absolutePath(path));
    }

    void Merging::trouble(const QString& line)
    {
        m_hasTroubles = true;
        m_console.trouble(line);
    }

    void Merging::refuseToReplace(const QString& path, const QString& what) const
    {
        const auto identity = fileIdentity(QFile::encodeName(path));
        for (const QString& written : m_written)
            if (identity && identity == fileIdentity(QFile::encodeName(written)))
                throw OutputRefused(u"%1 is %2, which would be replaced"_s.arg(path, what));
    }

    /// What a merging that was killed has left beside its log and its list.
    void Merging::removeLeftovers() const
    {
        for (const QString& path : m_written)
            removeLeftStagedFiles(folderPart(QFile::decodeName(StagedFile::resolvedTarget(path))),
                                  m_stagedSources);
    }

    ExitCode Merging::carryOut()
    {
        QStringList states;
        std::vector<FileIdentity> known;
        for (const QString& state : m_options.sources) {
            refuseToReplace(state, u"a state"_s);
            const auto identity = fileIdentity(QFile::encodeName(state));
            if (identity && std::ranges::find(known, *identity) != known.end()) {
                m_console.trouble(u"%1: named twice, read once"_s.arg(state));
                continue;
            }
            known.push_back(identity.value_or(FileIdentity()));
            states.append(state);
        }
        refuseToReplace(m_options.planFile, u"the plan"_s);
        if (!m_options.logFile.isEmpty()) {
            m_logCopy.emplace(m_options.logFile, m_console);
            if (const QString fault = m_logCopy->tryOut(); !fault.isNull())
                throw OutputRefused(
                    u"the log %1 cannot be written: %2"_s.arg(m_options.logFile, fault));
        }
        if (!m_options.failedFile.isEmpty())
            try {
                m_unfinished.emplace(m_options.failedFile);
            } catch (const std::runtime_error& error) {
                throw OutputRefused(u"the list %1 cannot be written: %2"_s.arg(
                    m_options.failedFile, QString::fromUtf8(error.what())));
            }
        m_run.emplace(m_options.planFile, states,
                      [this](const MergedRun::Foreign& foreign) { m_summary.addForeign(foreign); });
        m_run->forEach([this](const MergedSource& source) { takeSource(source); });
        m_console.clearProgress();
        removeLeftovers();
        if (m_unfinished)
            m_unfinished->commit();
        writeLog();
        const bool isSound = m_summary.isSound() && m_check.faults().count() == 0;
        const ExitCode code
            = isSound && !m_hasTroubles ? ExitCode::AllWritten : ExitCode::SomeFailed;
        tell(code);
        return m_console.isBroken() ? ExitCode::SomeFailed : code;
    }

    void Merging::takeSource(const MergedSource& source)
    {
        if (Signals::received() != 0)
            throw StopReceived();
        for (std::size_t i = 0; i < source.pages.size() && !m_written.isEmpty(); ++i)
            if (m_written.contains(source.plan.path) || m_written.contains(source.targetPath(i)))
                throw OutputRefused(
                    u"%1 or its output is what would be replaced"_s.arg(source.plan.path));
        if (const QByteArray name = QFile::encodeName(lastPathComponent(source.plan.path));
            isStagedName(name))
            m_stagedSources.insert(name);
        m_summary.add(source, m_run->states());
        if (m_options.conversion.run.verifies)
            m_check.check(source);
        if (m_logCopy)
            addToLog(m_log, source);
        if (m_unfinished)
            noteUnfinished(source);
        constexpr qint64 step = 1000;
        const bool showsProgress = m_options.progress == ProgressMode::Always
            || (m_options.progress == ProgressMode::Auto && m_console.isTerminal());
        if (showsProgress && (source.plan.line + 1) % step == 0)
            m_console.showProgress(u"%1 of %2 sources looked at"_s.arg(source.plan.line + 1)
                                       .arg(m_run->end().sources));
    }

    /// As --files-from reads it.
    void Merging::noteUnfinished(const MergedSource& source)
    {
        std::vector<std::size_t> places;
        for (std::size_t i = 0; i < source.pages.size(); ++i)
            if (source.pages.at(i).outcome <= MergedPage::Outcome::Failed)
                places.push_back(i);
        const bool isWhole = source.gaps().empty() && source.failures().empty();
        if (isWhole)
            return;
        QString line = source.plan.path;
        if (line.contains(u'\n')) {
            trouble(u"%1: a name with a line end has no place in a list of paths"_s.arg(line));
            return;
        }
        const bool isPart = !places.empty() && places.size() < source.pages.size();
        if (isPart && !source.isKeptTogether)
            line += u'\t' + source.pagesText(places);
        else if (source.plan.pageCount > 0 && source.plan.pageCount < source.plan.pagesCounted)
            line += u'\t' + source.plan.pages;
        const QByteArray bytes = QFile::encodeName(line) + '\n';
        m_unfinished->write({ reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                              static_cast<std::size_t>(bytes.size()) });
    }

    void Merging::writeLog()
    {
        if (!m_logCopy)
            return;
        if (m_run->started().isValid()) {
            m_log.startTime = m_run->started();
            m_log.endTime = m_run->ended();
        }
        if (const QString fault = m_logCopy->write(m_log); !fault.isNull())
            trouble(u"%1: %2"_s.arg(m_options.logFile, fault));
    }

    void Merging::tell(ExitCode code)
    {
        const OutputCheck* check = m_options.conversion.run.verifies ? &m_check : nullptr;
        if (m_options.isJson)
            m_console.putBytes(jsonLine(m_summary.toJson(*m_run, check, static_cast<int>(code))));
        else if (!m_options.isQuiet)
            for (const QString& line : m_summary.lines(*m_run, check))
                m_console.result(line);
        if (!m_summary.isSound())
            m_console.trouble(
                u"%1: not all of the plan was done exactly once"_s.arg(m_options.planFile));
        if (m_check.faults().count() > 0)
            m_console.trouble(
                u"%1: not all files are as they were converted"_s.arg(m_options.planFile));
    }

} // namespace

int mergeLogs(const Options& options, Console& console)
{
    const Signals signalsCaught;
    const StopScope scope([] { return Signals::received() != 0; });
    try {
        return static_cast<int>(Merging(options, console).carryOut());
    } catch (const OutputRefused& refusal) {
        console.trouble(QString::fromUtf8(refusal.what()));
        return static_cast<int>(ExitCode::OutputRefused);
    } catch (const StopReceived&) {
        return 128 + Signals::received();
    } catch (const std::runtime_error& error) {
        console.trouble(QString::fromUtf8(error.what()));
        return static_cast<int>(ExitCode::NoSource);
    }
}

} // namespace pagestack
