#include "cli/PlanCommand.h"

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/Options.h"
#include "cli/PlannedRun.h"
#include "cli/Preflight.h"
#include "cli/Report.h"
#include "engine/fleet/PlanMaker.h"
#include "engine/log/Diagnostic.h"
#include "engine/support/Signals.h"
#include "engine/threads/StopScope.h"

#include <system_error>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qsizetype blockBytes = 1 << 18;

    class Planning
    {
    public:
        Planning(const Options& options, Console& console)
            : m_options(options)
            , m_console(console)
        {
        }

        ExitCode carryOut();

    private:
        PlanMaker::Told told();
        void put(const QByteArray& line);
        void flush();

        const Options& m_options;
        Console& m_console;
        QByteArray m_waiting;
        bool m_hasTroubles = false;
    };

    PlanMaker::Told Planning::told()
    {
        const bool showsProgress = m_options.progress == ProgressMode::Always
            || (m_options.progress == ProgressMode::Auto && m_console.isTerminal());
        return { .trouble =
                     [this](const QString& line) {
                         m_hasTroubles = true;
                         m_console.trouble(line);
                     },
                 .remark =
                     [this](const QString& line) {
                         if (m_options.isVerbose)
                             m_console.trouble(line);
                     },
                 .progress =
                     [this, showsProgress](qint64 done, qint64 total) {
                         if (showsProgress)
                             m_console.showProgress(
                                 done == 0 ? u"%1 sources found"_s.arg(total)
                                           : u"%1 of %2 sources read"_s.arg(done).arg(total));
                     },
                 .isWanted = [] { return Signals::received() == 0; } };
    }

    ExitCode Planning::carryOut()
    {
        const QString folder = m_options.outputFolder.isEmpty()
            ? QString()
            : checkedOutputFolder(m_options.outputFolder);
        PlanMaker maker(planHead(m_options, folder), told());
        QStringList leftOut;
        forEachSource(m_options.sources, m_options.pathLists, m_options.isRecursive,
                      { .file = [&](const Source& source) { maker.add(source); },
                        .trouble =
                            [&](const PathTrouble& trouble) {
                                m_hasTroubles = true;
                                m_console.trouble(
                                    messageText({ .reason = trouble.reason }, trouble.shown));
                            },
                        .leftOut = [&](const QString& shown) { leftOut.append(shown); } });
        if (Signals::received() != 0) // in the middle of a folder
            throw StopReceived();
        if (!leftOut.isEmpty())
            m_console.trouble(leftOutText(leftOut));
        if (maker.sources() == 0) {
            m_console.trouble(u"no source found"_s);
            return ExitCode::NoSource;
        }
        const qint64 clashes = maker.write([this](const QByteArray& line) { put(line); });
        m_console.clearProgress();
        if (clashes > 0)
            throw OutputRefused(u"there is no plan; --mirror, --name or --output may help"_s);
        flush();
        return m_hasTroubles ? ExitCode::SomeFailed : ExitCode::AllWritten;
    }

    void Planning::put(const QByteArray& line)
    {
        m_waiting += line;
        if (m_waiting.size() >= blockBytes)
            flush();
    }

    void Planning::flush()
    {
        if (const int error = m_console.putBytes(m_waiting))
            throw std::runtime_error("the plan cannot be written: "
                                     + std::generic_category().message(error));
        m_waiting.clear();
    }

} // namespace

int printPlan(const Options& options, Console& console)
{
    const Signals signalsCaught;
    const StopScope scope([] { return Signals::received() != 0; });
    try {
        return static_cast<int>(Planning(options, console).carryOut());
    } catch (const OutputRefused& refusal) {
        console.trouble(QString::fromUtf8(refusal.what()));
        return static_cast<int>(ExitCode::OutputRefused);
    } catch (const StopReceived&) {
        return 128 + Signals::received();
    }
}

} // namespace pagestack
