#include "engine/plan/RunPlan.h"
#include "engine/support/Application.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "mainwindow/PagestackAppDelegate.h"
#include "mainwindow/run/ProcessPanel.h"
#include "mainwindow/widgets/AlertPanel.h"

#include <QDir>

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::size_t shownClashes = 4;

    QString sourceOf(const RunPlan& plan, qsizetype output)
    {
        return QDir::toNativeSeparators(plan.outputs().at(output).filename);
    }

    /// A line for each of the first findings, and one for the rest.
    template <typename Finding, typename Line>
    QStringList lines(const std::vector<Finding>& findings, Line line)
    {
        QStringList text;
        for (std::size_t i = 0; i < findings.size() && i < shownClashes; ++i)
            text.append(line(findings.at(i)));
        if (findings.size() > shownClashes)
            text.append(PagestackAppDelegate::tr("and %n more", nullptr,
                                                 static_cast<int>(findings.size() - shownClashes)));
        return text;
    }

    QString questionFor(const RunPlan& plan, const RunPlan& numbered)
    {
        QStringList text { PagestackAppDelegate::tr(
            "Some outputs of this run would replace each other or a file of the list:") };
        text += lines(plan.shared(), [&](const RunPlan::Shared& shared) {
            return PagestackAppDelegate::tr("%1 would be written by %2 and by %3")
                .arg(plan.name(shared.target), sourceOf(plan, shared.first),
                     sourceOf(plan, shared.target.output));
        });
        text += lines(plan.replacedSources(), [&](const RunPlan::Replaced& replaced) {
            return PagestackAppDelegate::tr("%1 would be replaced by output of %2")
                .arg(sourceOf(plan, replaced.source), sourceOf(plan, replaced.target.output));
        });
        const PlannedTarget example = plan.shared().empty() ? plan.replacedSources().front().target
                                                            : plan.shared().front().target;
        text += QString();
        text
            += PagestackAppDelegate::tr("With a number, %1 of %2 is written as %3.")
                   .arg(plan.name(example), sourceOf(plan, example.output), numbered.name(example));
        return text.join(u'\n');
    }

} // namespace

/// On the thread of the run. False when there is something to be asked first, which is left at
/// `m_clash`; a run that is cancelled meanwhile comes to its end as it would later.
bool PagestackAppDelegate::isPlanClear(Process& job)
try {
    const auto isWanted = [&job] { return job.isCombining(); };
    const QList<OutputFile> outputs = job.outputFiles();
    const RunPlan plan(outputs, *m_settings, RunPlan::Numbering::None, {}, isWanted);
    if (!isWanted() || (plan.shared().empty() && plan.replacedSources().empty()))
        return true;
    const RunPlan numbered(outputs, *m_settings, RunPlan::Numbering::Clashing, {}, isWanted);
    if (!isWanted())
        return true;
    callOnMainThread([&] { m_clash = Clash { questionFor(plan, numbered), numbered.outputs() }; });
    return false;
} catch (const std::exception& error) {
    systemLogError(u"Split"_s, error);
    job.stop(); // a run that nobody looked through writes nothing
    return true;
}

void PagestackAppDelegate::askForNumbers()
{
    const Clash clash = *std::exchange(m_clash, std::nullopt);
    if (!m_process->isCombining()) { // cancelled a moment ago: the panel waits for the end
        startWorker([job = m_process.get()] { job->start(); });
        return;
    }
    m_processViewPanel->hide();
    m_processViewPanel->stopFollowing();
    leaveRun();
    m_services.alerts.ask(m_window.get(), AlertPanel::Style::Critical, getAppTitle(u""_s),
                          clash.question, { tr("Number the later ones"), tr("Cancel") },
                          [this, outputs = clash.numbered](int button) {
                              if (button == 0 && !m_worker && m_process)
                                  startRun(outputs, true);
                          });
}

} // namespace pagestack
