#include "cli/Conversion.h"

#include "cli/Console.h"
#include "cli/LogCopy.h"
#include "cli/Options.h"
#include "cli/Preflight.h"
#include "cli/Report.h"
#include "engine/files/FileState.h"
#include "engine/files/StagedFile.h"
#include "engine/job/Process.h"
#include "engine/sources/Sources.h"
#include "engine/support/Application.h"
#include "engine/support/Paths.h"
#include "engine/support/Signals.h"
#include "engine/threads/StopScope.h"
#include "engine/threads/WorkerThread.h"

#include <QCoreApplication>
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
        Conversion(const Options& options, Console& console)
            : m_options(options)
            , m_console(console)
            , m_settings(nullptr)
        {
        }

        int carryOut();

    private:
        bool lookUpSources();
        void takeSettings();
        void planOutputs();
        void refuseInPlaceOfInput(const ReportFile& file) const;
        void checkTargets();
        void prepareLog(Process& job);
        bool runOnThread(const std::function<void()>& work);
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
        QList<Source> m_sources;
        QList<OutputFile> m_outputs;
        std::optional<LogCopy> m_logCopy;
        int m_lostPaths = 0; ///< of the command line, that are no source
        bool m_hasFailures = false;
    };

    int Conversion::carryOut()
    {
        if (!lookUpSources()) {
            m_console.trouble(u"no source found"_s);
            return code(ExitCode::NoSource);
        }
        m_signals.emplace();
        try {
            takeSettings();
            planOutputs();
            checkTargets();
        } catch (const OutputRefused& refusal) {
            m_console.trouble(QString::fromUtf8(refusal.what()));
            return code(ExitCode::OutputRefused);
        }
        Process job(nullptr, [](const QString&) {
            // The job waits here for the main thread after each source, so that results cannot pile
            // up behind a slow reader.
        });
        prepareLog(job);
        Report report(m_options, m_sources, m_outputs, m_console);
        runJob(job, report);
        copyLog(job);
        report.finish(job.message(), m_lostPaths, m_hasFailures);
        const bool hasFailures = m_hasFailures || report.hasFailures() || m_console.isBroken();
        return code(hasFailures ? ExitCode::SomeFailed : ExitCode::AllWritten);
    }

    bool Conversion::lookUpSources()
    {
        CollectedSources found
            = collectSources(m_options.sources, m_options.pathLists, m_options.isRecursive);
        for (const PathTrouble& trouble : found.troubles)
            m_console.trouble(messageText({ .reason = trouble.reason }, trouble.shown));
        m_lostPaths = static_cast<int>(found.troubles.size());
        m_hasFailures = m_lostPaths > 0;
        if (!found.leftOut.isEmpty())
            m_console.trouble(leftOutText(found.leftOut));
        if (m_options.isVerbose) {
            for (const QString& duplicate : found.duplicates)
                m_console.trouble(
                    messageText({ .reason = u"named twice, converted once"_s }, duplicate));
        }
        m_sources = std::move(found.files);
        return !m_sources.isEmpty();
    }

    void Conversion::takeSettings()
    {
        applyTo(m_settings, m_options.conversion);
        m_settings.setIsOpenFolderAfterConversion(false);
        if (!m_options.outputFolder.isEmpty())
            m_settings.setOutputFolderPath(checkedOutputFolder(m_options.outputFolder));
    }

    /// Counts the pages of every source.
    void Conversion::planOutputs()
    {
        const StopScope scope([] { return Signals::received() != 0; });
        for (const Source& source : m_sources) {
            if (Signals::received())
                return;
            OutputFile output { .filename = source.path, .fileItems = {} };
            if (const auto item = FileItem::initWithURL(QUrl::fromLocalFile(source.path))) {
                item->setFoundIn(source.foundIn);
                item->setPageChoice(source.pageChoice);
                output.fileItems.append(item);
            }
            m_outputs.append(output);
        }
    }

    void Conversion::refuseInPlaceOfInput(const ReportFile& file) const
    {
        const std::optional<FileIdentity> there = fileIdentity(QFile::encodeName(file.target));
        for (const Source& source : m_sources)
            if (there && there == fileIdentity(QFile::encodeName(source.path)))
                throw OutputRefused(
                    u"%1 is a source, which the %2 would replace"_s.arg(source.shown, file.what));
        for (const QString& list : m_options.pathLists)
            if (there && list != u"-" && there == fileIdentity(QFile::encodeName(list)))
                throw OutputRefused(
                    u"%1 is a list of sources, which the %2 would replace"_s.arg(list, file.what));
    }

    void Conversion::checkTargets()
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
        if (Signals::received())
            return tryReports(false);
        const RunPlan plan(m_outputs, m_settings, m_options.conversion.run,
                           m_options.onExists == OnExists::Number ? RunPlan::Numbering::Taken
                                                                  : RunPlan::Numbering::None,
                           others, [] { return Signals::received() == 0; });
        m_outputs = plan.outputs();
        const TargetFindings found = findingsOf(plan, m_sources, m_options);
        const bool isRefused = found.refusals.count() > 0;
        for (const QString& line : (isRefused ? found.refusals : found.warnings).lines())
            m_console.trouble(line);
        if (m_options.isVerbose && !isRefused)
            for (const QString& remark : plan.remarks())
                m_console.trouble(remark);
        if (isRefused)
            throw OutputRefused(u"nothing was written; --output and --on-exists may help"_s);
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
        if (m_options.leavesLog && !isPossible)
            m_console.trouble(u"the folder for the log cannot be made: %1"_s.arg(fault));
    }

    /// Until `work` is done. False, at once, when the system has no thread for it.
    bool Conversion::runOnThread(const std::function<void()>& work)
    {
        WorkerThread worker(work);
        QObject::connect(&worker, &QThread::finished, qApp, &QCoreApplication::quit,
                         Qt::QueuedConnection);
        worker.start();
        if (!worker.isRunning() && !worker.isFinished())
            return false;
        QCoreApplication::exec();
        worker.wait();
        return true;
    }

    void Conversion::runJob(Process& job, Report& report)
    {
        report.listenTo(job);
        job.setOutputFiles(m_outputs);
        job.setSettings(&m_settings);
        job.setJobs(m_options.jobs);
        job.setRunOptions(m_options.conversion.run);
        job.setRecordFile(m_options.recordFile);
        if (!m_options.reportFile.isEmpty())
            job.setReport(m_options.reportFile);
        job.setKeepsExisting(m_options.onExists != OnExists::Overwrite);
        job.setTotalFileSelected(static_cast<int>(m_outputs.size()));
        if (m_options.onExists == OnExists::Skip)
            job.setTargetFilter(Process::isFreeTarget);
        QObject::connect(&*m_signals, &Signals::interrupted, &job, &Process::stop);
        job.setIsCombining(Signals::received() == 0);

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
        for (const auto& [name, file] : { std::pair(u"record"_s, m_options.recordFile),
                                          std::pair(u"report"_s, m_options.reportFile) }) {
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
        m_hasFailures = true;
        m_console.trouble(messageText({ .reason = fault }, m_options.logFile));
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
    return Conversion(options, console).carryOut();
}

} // namespace pagestack
