#include "cli/Conversion.h"

#include "cli/Console.h"
#include "cli/EventStream.h"
#include "cli/FailedSources.h"
#include "cli/JobThread.h"
#include "cli/LogCopy.h"
#include "cli/Options.h"
#include "cli/PlannedRun.h"
#include "cli/Preflight.h"
#include "cli/Report.h"
#include "cli/RunSources.h"
#include "engine/files/FileState.h"
#include "engine/files/PosixFile.h"
#include "engine/files/StagedFile.h"
#include "engine/fleet/PlanFile.h"
#include "engine/job/Process.h"
#include "engine/plan/ChosenPages.h"
#include "engine/support/Application.h"
#include "engine/support/Paths.h"
#include "engine/support/Signals.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <exception>
#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    class Conversion
    {
    public:
        /// `planned` is null without a plan.
        Conversion(const Options& options, const PlannedRun* planned, Console& console)
            : m_options(options)
            , m_console(console)
            , m_settings(nullptr)
            , m_work(options, planned, console)
            , m_plan(planned ? planned->identity : QString(u""_s))
        {
        }

        int carryOut();

    private:
        void takeSettings();
        void openState();
        void startEvents(Process& job);
        void showPlan(const RunPlan& plan);
        void writeFailures();
        void addFault(const QString& reason, const QString& file);
        void refuseInPlaceOfInput(const ReportFile& file) const;
        QStringList checkedReports() const;
        void checkTargets(const QStringList& others);
        void prepareLog(Process& job);
        void runJob(Process& job, Report& report);
        void tryReports(bool isFolderNew);
        void copyLog(Process& job);
        int code(ExitCode ended) const;

        const Options& m_options;
        Console& m_console;
        /// None while sources are looked up, which may wait for input: then a signal ends the
        /// program.
        std::optional<Signals> m_signals;
        Settings m_settings;
        RunSources m_work;
        const QString m_plan; ///< its identity; empty without one
        std::optional<RunState> m_state;
        std::optional<EventStream> m_events;
        std::optional<FailedSources> m_failed;
        std::optional<LogCopy> m_logCopy;
        bool m_isNoted = true; ///< what is done, where it is to be
        std::optional<bool> m_hasHazards; ///< of the outputs, once they are planned
        bool m_hasFailures = false;
        bool m_isPassing = false; ///< one of these may be gone the next time
    };

    int Conversion::carryOut()
    {
        if (!m_work.lookUp()) {
            m_console.trouble(u"no source found"_s);
            return code(ExitCode::NoSource);
        }
        m_signals.emplace();
        try {
            takeSettings();
            m_work.countPages();
            m_work.nameOutputs(m_settings);
            const QStringList others = checkedReports();
            openState();
            if (m_state)
                m_work.leaveOutDone(*m_state, m_settings);
            checkTargets(others);
        } catch (const OutputRefused& refusal) {
            m_console.trouble(QString::fromUtf8(refusal.what()));
            return code(ExitCode::OutputRefused);
        }
        if (m_options.isDryRun)
            return code(m_hasFailures || m_work.hasFailures() ? ExitCode::SomeFailed
                                                              : ExitCode::AllWritten);
        // No time line, for which the job would wait for the main thread after each source.
        Process job(nullptr, {});
        prepareLog(job);
        Report report(m_options, m_work.sources(), m_work.outputs(), m_console);
        startEvents(job);
        runJob(job, report);
        copyLog(job);
        writeFailures();
        report.finish(job.message(), m_work.lostPaths(), m_hasFailures || m_work.hasFailures());
        const bool hasFailures
            = m_hasFailures || m_work.hasFailures() || report.hasFailures() || m_console.isBroken();
        const bool isPassing
            = m_isPassing || m_work.hasPassingFailures() || report.hasPassingFailures();
        const int ended = code(!hasFailures    ? ExitCode::AllWritten
                                   : isPassing ? ExitCode::TryAgain
                                               : ExitCode::SomeFailed);
        if (m_events)
            m_events->end(ended);
        return ended;
    }

    void Conversion::takeSettings()
    {
        applyTo(m_settings, m_options.conversion);
        m_settings.setIsOpenFolderAfterConversion(false);
        if (!m_options.outputFolder.isEmpty())
            m_settings.setOutputFolderPath(checkedOutputFolder(m_options.outputFolder));
    }

    void Conversion::openState()
    {
        if (m_options.stateFile.isEmpty())
            return;
        try {
            m_state.emplace(m_options.stateFile, m_plan,
                            planHead(m_options, m_settings.outputFolderPath()).digest());
        } catch (const std::runtime_error& error) {
            if (isPassing(error.what()))
                throw; // a state that is in use, say: worth another try
            throw OutputRefused(QString::fromUtf8(error.what()));
        }
    }

    void Conversion::startEvents(Process& job)
    {
        m_failed.emplace(isKeptTogether(m_settings), m_work.choices());
        m_failed->listenTo(job);
        qint64 done = 0;
        for (const RunSources::LeftOut& source : m_work.leftOut()) {
            if (!source.reason.isNull())
                m_failed->add(source.path);
            done += source.pageCount;
        }
        if (done > 0 && !m_options.isQuiet)
            m_console.result(u"%1 pages were done by a former run"_s.arg(done));
        if (!m_state && !m_options.isJson)
            return;
        m_events.emplace(m_options.isJson, m_console, m_state ? &*m_state : nullptr,
                         [this, &job](const QString& reason) {
                             m_hasFailures = true;
                             m_isPassing = m_isPassing || isPassing(reason.toStdString());
                             m_console.trouble(reason);
                             m_isNoted = false;
                             job.stop();
                         });
        m_work.begin(*m_events, m_settings,
                     planHead(m_options, m_settings.outputFolderPath()).digest());
        job.setTakeEvent([this](const QJsonObject& event) { m_events->take(event); });
    }

    /// Of a file that is written besides the outputs.
    void Conversion::addFault(const QString& reason, const QString& file)
    {
        m_hasFailures = true;
        m_isPassing = m_isPassing || isPassing(reason.toStdString());
        m_console.trouble(messageText({ .reason = reason }, file));
    }

    void Conversion::writeFailures()
    {
        if (m_options.failedFile.isEmpty())
            return;
        const QString fault = m_failed->save(m_options.failedFile);
        if (fault.isNull())
            return;
        addFault(fault, m_options.failedFile);
    }

    /// For people: what would be written.
    void Conversion::showPlan(const RunPlan& plan)
    {
        const bool isTogether = isKeptTogether(m_settings);
        qsizetype pages = 0;
        for (qsizetype i = 0; i < plan.outputs().size(); ++i) {
            const OutputFile& output = plan.outputs().at(i);
            const Source& source = m_work.sources().at(i);
            const QString fault
                = output.fileItems.isEmpty() ? QString() : output.fileItems.constFirst()->fault();
            if (!fault.isEmpty()) {
                m_hasFailures = true;
                m_console.trouble(messageText({ .reason = fault }, source.shown));
            }
            QList<int> left;
            for (const auto& item : output.fileItems)
                left += chosenPages(*item, m_options.conversion.run);
            pages += left.size();
            for (const int page : isTogether && !left.isEmpty() ? QList<int> { 0 } : left) {
                const QString name = plan.name({ i, page });
                const bool isThere = !Process::isFreeTarget(plan.names().path(output, page));
                m_console.result(u"%1 -> %2%3"_s.arg(
                    page == 0 ? source.shown : u"%1[%2]"_s.arg(source.shown).arg(page),
                    shownTarget(source, output, name, m_options),
                    isThere ? u" (exists)"_s : QString()));
                if (isTogether)
                    break;
            }
        }
        m_console.result(
            u"%1 pages of %2 sources, nothing was written"_s.arg(pages).arg(plan.outputs().size()));
    }

    void Conversion::refuseInPlaceOfInput(const ReportFile& file) const
    {
        const std::optional<FileIdentity> there = fileIdentity(QFile::encodeName(file.target));
        for (const Source& source : m_work.sources())
            if (there && there == fileIdentity(QFile::encodeName(source.path)))
                throw OutputRefused(
                    u"%1 is a source, which the %2 would replace"_s.arg(source.shown, file.what));
        if (!m_options.planFile.isEmpty() && there
            && there == fileIdentity(QFile::encodeName(m_options.planFile)))
            throw OutputRefused(
                u"%1 is the plan, which the %2 would replace"_s.arg(m_options.planFile, file.what));
        for (const QString& list : m_options.pathLists)
            if (there && list != u"-" && there == fileIdentity(QFile::encodeName(list)))
                throw OutputRefused(
                    u"%1 is a list of sources, which the %2 would replace"_s.arg(list, file.what));
    }

    /// The paths of all that is written besides the outputs.
    QStringList Conversion::checkedReports() const
    {
        QStringList others;
        for (const ReportFile& file : reportFiles(m_options)) {
            refuseInPlaceOfInput(file); // They are written after a signal, too.
            if (const qsizetype other = others.indexOf(file.target); other >= 0)
                throw OutputRefused(u"%1 cannot hold both the %2 and the %3"_s.arg(
                    file.name, reportFiles(m_options).at(other).what, file.what));
            if (m_options.conversion.run.writesChecksums
                && lastPathComponent(file.target) == u"SHA256SUMS")
                throw OutputRefused(
                    u"%1 has the name of checksums, which the %2 would replace"_s.arg(file.name,
                                                                                      file.what));
            others.append(file.target);
        }
        return others;
    }

    void Conversion::checkTargets(const QStringList& others)
    {
        if (Signals::received())
            return tryReports(false);
        const RunPlan plan(m_work.outputs(), m_settings, m_options.conversion.run,
                           m_options.onExists == OnExists::Number ? RunPlan::Numbering::Taken
                                                                  : RunPlan::Numbering::None,
                           others, [] { return Signals::received() == 0; });
        m_work.setOutputs(plan.outputs());
        m_hasHazards = plan.hasHazards();
        const TargetFindings found = findingsOf(plan, m_work.sources(), m_options, m_work.own());
        const bool isRefused = found.refusals.count() > 0;
        for (const QString& line : (isRefused ? found.refusals : found.warnings).lines())
            m_console.trouble(line);
        if (m_options.isVerbose && !isRefused)
            for (const QString& remark : plan.remarks())
                m_console.trouble(remark);
        if (m_options.isDryRun)
            showPlan(plan);
        if (isRefused)
            throw OutputRefused(u"nothing was written; --output and --on-exists may help"_s);
        if (m_options.isDryRun)
            return;
        const QString folder = m_settings.outputFolderPath();
        const bool isFolderNew = !folder.isEmpty() && !QFileInfo(folder).isDir();
        if (!folder.isEmpty())
            makeOutputFolder(folder);
        tryReports(isFolderNew);
    }

    void Conversion::prepareLog(Process& job)
    {
        QString fault;
        const bool isPossible = m_options.leavesLog && createApplicationUsersFolder(u""_s, &fault)
            && createApplicationUsersFolder(u"Logs"_s, &fault);
        job.log()->setStored(isPossible);
        job.log()->setTextDropped(!isPossible && m_options.logFile.isEmpty()
                                  && m_options.reportFile.isEmpty());
        if (m_options.leavesLog && !isPossible)
            m_console.trouble(u"the folder for the log cannot be made: %1"_s.arg(fault));
    }

    void Conversion::runJob(Process& job, Report& report)
    {
        report.listenTo(job);
        job.setOutputFiles(m_work.outputs());
        job.setSettings(&m_settings);
        job.setJobs(askedJobs(m_options));
        if (m_hasHazards)
            job.setHazards(*m_hasHazards);
        job.setRunOptions(m_options.conversion.run);
        job.setRecordFile(m_options.recordFile);
        if (!m_options.reportFile.isEmpty())
            job.setReport(m_options.reportFile);
        job.setKeepsExisting(m_options.onExists != OnExists::Overwrite);
        job.setTotalFileSelected(static_cast<int>(m_work.outputs().size()));
        job.setReplaceable(m_work.own());
        job.setProven(m_work.proven());
        if (m_options.onExists == OnExists::Skip)
            job.setTargetFilter([this](const QString& path) {
                return m_work.own().contains(path) || Process::isFreeTarget(path);
            });
        if (m_options.mostFailures > 0)
            QObject::connect(
                &job, &Process::totalFileProcessedChanged, &job,
                [this, &job] {
                    if (m_failed->count() < m_options.mostFailures || !job.isCombining())
                        return;
                    m_console.trouble(u"the run ends here, since %1 sources have failed"_s.arg(
                        m_failed->count()));
                    job.stop();
                },
                Qt::DirectConnection);
        QObject::connect(&*m_signals, &Signals::interrupted, &job, &Process::stop);
        job.setIsCombining(Signals::received() == 0 && m_isNoted);

        std::atomic<bool> endedBadly = false;
        const auto work = [&] {
            try {
                job.start();
            } catch (
                ...) { // The worker's edge: the job has come to its end, only the reason is lost.
                endedBadly = true;
            }
        };
        if (!runOnThread(work)) {
            // There is no event loop to tell of a signal.
            QObject::connect(&job, &Process::pageDone, &job, [&job] {
                if (Signals::received())
                    job.stop();
            });
            work();
        }

        report.endProgress();
        const bool isCutShort = !job.failure().isNull();
        if (isCutShort)
            m_console.trouble(u"the run ended early: %1"_s.arg(job.failure()));
        if (endedBadly)
            m_console.trouble(u"the run was ended by an unknown error"_s);
        m_hasFailures = m_hasFailures || isCutShort || endedBadly;
        m_isPassing = m_isPassing || (isCutShort && isPassing(job.failure().toStdString()));
    }

    /// Before anything is written. A folder that was made for the output goes again.
    void Conversion::tryReports(bool isFolderNew)
    {
        QString what = u"log %1"_s.arg(m_options.logFile);
        QString fault;
        if (!m_options.logFile.isEmpty()) {
            m_logCopy.emplace(m_options.logFile, m_console);
            fault = m_logCopy->tryOut();
        }
        for (const auto& [name, file] :
             { std::pair(u"record"_s, m_options.recordFile),
               std::pair(u"report"_s, m_options.reportFile),
               std::pair(u"list of failures"_s, m_options.failedFile) }) {
            if (!fault.isNull() || file.isEmpty())
                continue;
            what = name + u' ' + file;
            try {
                const StagedFile staged(file); // goes again
            } catch (const std::runtime_error& error) {
                fault = QString::fromUtf8(error.what());
            }
        }
        if (fault.isNull())
            return;
        if (isFolderNew)
            QDir().rmdir(m_settings.outputFolderPath());
        throw OutputRefused(u"the %1 cannot be written: %2"_s.arg(what, fault));
    }

    void Conversion::copyLog(Process& job)
    {
        if (!m_logCopy)
            return;
        const QString fault = m_logCopy->write(job);
        if (fault.isNull())
            return;
        addFault(fault, m_options.logFile);
    }

    int Conversion::code(ExitCode ended) const
    {
        if (const int number = Signals::received())
            return 128 + number;
        return static_cast<int>(ended);
    }

} // namespace

int convert(const Options& options, Console& console)
{
    if (options.command != Command::Run)
        return Conversion(options, nullptr, console).carryOut();
    const PlannedRun planned = readPlannedRun(options);
    const Options settled = withPlan(options, planned.head);
    return Conversion(settled, &planned, console).carryOut();
}

} // namespace pagestack
