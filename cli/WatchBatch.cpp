#include "cli/WatchBatch.h"

#include "cli/Console.h"
#include "cli/EventStream.h"
#include "cli/JobThread.h"
#include "cli/Options.h"
#include "cli/PlannedRun.h"
#include "cli/Preflight.h"
#include "engine/files/PosixFile.h"
#include "engine/job/Process.h"
#include "engine/plan/ChosenPages.h"
#include "engine/plan/RunPlan.h"
#include "engine/support/Signals.h"

#include <QFileInfo>
#include <QJsonArray>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    using Outcome = WatchedResult::Outcome;

    /// In the order in which targets are made; 0 is the file that keeps the pages together.
    QList<int> targetsOf(const OutputFile& output, const Settings& settings)
    {
        if (output.pages.isEmpty() || !isKeptTogether(settings))
            return output.pages;
        return { 0 };
    }

    QStringList textsIn(const QJsonValue& list)
    {
        QStringList texts;
        for (const QJsonValue text : list.toArray())
            texts.append(text.toString());
        return texts;
    }

} // namespace

std::vector<WatchedResult> WatchBatch::carryOut(const QList<WatchedSource>& items,
                                                const Signals& signalsCaught)
{
    m_results.assign(static_cast<std::size_t>(items.size()), {});
    m_items.clear();
    m_states.clear();
    for (qsizetype i = 0; i < items.size(); ++i) {
        m_items.insert(items.at(i).source.path, i);
        m_states.append(items.at(i).state);
    }
    try {
        makeOutputFolder(checkedOutputFolder(m_options.outputFolder));
    } catch (const OutputRefused& refusal) {
        for (qsizetype i = 0; i < items.size(); ++i)
            refuse(i, Outcome::TryAgain, QString::fromUtf8(refusal.what()), items.at(i).source);
        return m_results;
    }
    nameOutputs(items);
    const bool isNumbered
        = m_options.onExists == OnExists::Number && !items.constFirst().before.has_value();
    QSet<QString> here;
    for (const WatchedSource& item : items)
        here.insert(item.source.path);
    const RunPlan plan(m_outputs, m_settings, m_options.conversion.run,
                       isNumbered ? RunPlan::Numbering::Taken : RunPlan::Numbering::None,
                       isNumbered ? m_journal.givenAway(here) : QStringList(),
                       [] { return Signals::received() == 0; });
    if (Signals::received())
        return m_results;
    const std::vector<qsizetype> left = judge(plan, items);
    QList<Source> sources;
    QList<OutputFile> outputs;
    for (const qsizetype i : left) {
        sources.append(items.at(i).source);
        outputs.append(plan.outputs().at(i));
    }
    m_outputs = outputs;
    if (!sources.isEmpty())
        run(sources, signalsCaught);
    return m_results;
}

void WatchBatch::nameOutputs(const QList<WatchedSource>& items)
{
    m_outputs.clear();
    m_own.clear();
    for (const WatchedSource& item : items) {
        OutputFile output { .filename = item.source.path, .fileItems = {} };
        if (const auto file = FileItem::initWithURL(QUrl::fromLocalFile(item.source.path))) {
            file->setFoundIn(item.source.foundIn);
            output.fileItems.append(file);
        }
        m_outputs.append(output);
    }
    const OutputNames names(m_settings, m_options.conversion.run);
    m_outputs = names.completed(m_outputs);
    for (qsizetype i = 0; i < items.size(); ++i) {
        OutputFile& output = m_outputs[i];
        output.isNamed = true;
        const auto& before = items.at(i).before;
        if (!before) {
            output.firstRunning += m_journal.nextRunning() - 1;
            continue;
        }
        output.number = before->number;
        output.firstRunning = before->running;
        for (const int page : targetsOf(output, m_settings))
            if (const QString path = names.path(output, page);
                !Process::isFreeTarget(path) && !before->kept.contains(names.name(output, page)))
                m_own.insert(path);
    }
}

void WatchBatch::refuse(qsizetype item, Outcome outcome, const QString& reason,
                        const Source& source)
{
    WatchedResult& result = m_results.at(static_cast<std::size_t>(item));
    result.outcome = outcome;
    result.reasons.append(reason);
    const QString line = messageText({ .reason = reason }, source.shown);
    if (!m_isPrinted || m_isPrinted(source.path, line))
        m_console.trouble(line);
}

/// Leaves out what cannot be converted now. Gives the others.
std::vector<qsizetype> WatchBatch::judge(const RunPlan& plan, const QList<WatchedSource>& items)
{
    QSet<qsizetype> out;
    const auto leaveOut = [&](qsizetype item, Outcome outcome, const QString& reason) {
        if (!out.contains(item))
            refuse(item, outcome, reason, items.at(item).source);
        out.insert(item);
    };
    if (const QStringList faults = plan.folderFaults(); !faults.isEmpty())
        for (qsizetype i = 0; i < items.size(); ++i)
            leaveOut(i, Outcome::TryAgain, faults.constFirst());
    for (const RunPlan::Shared& shared : plan.shared()) {
        const qsizetype item = shared.target.output;
        if (shared.first == item)
            leaveOut(
                item, Outcome::Failed,
                u"%1 is wanted by several of its pages; a --name with {page} or {n} tells them apart"_s
                    .arg(plan.name(shared.target)));
        else
            out.insert(item); // its turn is when the other one is done
    }
    for (const RunPlan::Replaced& replaced : plan.replacedSources())
        leaveOut(
            replaced.target.output, Outcome::Failed,
            u"its output would replace %1, a source"_s.arg(items.at(replaced.source).source.shown));
    if (m_options.onExists == OnExists::Error)
        for (const PlannedTarget& target : plan.existing())
            if (const QString path
                = plan.names().path(plan.outputs().at(target.output), target.page);
                !m_own.contains(path))
                leaveOut(target.output, Outcome::Failed, path + u" exists already"_s);
    std::vector<qsizetype> left;
    for (qsizetype i = 0; i < items.size(); ++i)
        if (!out.contains(i))
            left.push_back(i);
    return left;
}

bool WatchBatch::isWanted(const QString& path) const
{
    return m_options.onExists != OnExists::Skip || m_own.contains(path)
        || Process::isFreeTarget(path);
}

void WatchBatch::run(const QList<Source>& sources, const Signals& signalsCaught)
{
    EventStream& events = m_events.emplace(m_options.isJson, m_console, nullptr,
                                           std::function<void(const QString&)>());
    Process job(nullptr, [](const QString&) {
        // The job waits here for the main thread after each source.
    });
    job.log()->setStored(false);
    Report report(m_options, sources, m_outputs, m_console);
    report.setFilter(m_isPrinted);
    report.listenTo(job);
    EventStream::Run head { .options = planHead(m_options, m_settings.outputFolderPath()).digest(),
                            .sources = sources.size() };
    for (qsizetype i = 0; i < m_outputs.size(); ++i) {
        head.pages += m_outputs.at(i).pages.size();
        events.addSource(sources.at(i).path, { i, pageRangesText(m_outputs.at(i).pages), {} });
    }
    events.begin(head);
    job.setTakeEvent([this, &job](const QJsonObject& event) { take(event, job); });
    job.setOutputFiles(m_outputs);
    job.setSettings(&m_settings);
    job.setJobs(askedJobs(m_options));
    job.setRunOptions(m_options.conversion.run);
    job.setKeepsExisting(m_options.onExists != OnExists::Overwrite);
    job.setTotalFileSelected(static_cast<int>(m_outputs.size()));
    job.setReplaceable(m_own);
    // What is not noted must not be written.
    job.setTargetFilter([this](const QString& path) { return m_isNoted && isWanted(path); });
    QObject::connect(&signalsCaught, &Signals::interrupted, &job, &Process::stop);
    job.setIsCombining(Signals::received() == 0);
    const auto work = [&] { job.start(); };
    if (!runOnThread(work)) {
        // There is no event loop to tell of a signal.
        QObject::connect(&job, &Process::pageDone, &job, [&job] {
            if (Signals::received())
                job.stop();
        });
        work();
    }
    report.endProgress();
    if (!m_fault.isNull() && (!m_isPrinted || m_isPrinted({}, m_fault)))
        m_console.trouble(m_fault);
    if (!job.failure().isNull())
        for (const Source& source : sources)
            if (const qsizetype item = m_items.value(source.path);
                m_results.at(static_cast<std::size_t>(item)).outcome == Outcome::NotReached)
                refuse(item, Outcome::TryAgain, job.failure(), source);
    int ended = 0;
    for (const WatchedResult& result : m_results) {
        if (result.outcome == Outcome::Failed && ended == 0)
            ended = 1;
        if (result.outcome == Outcome::TryAgain)
            ended = 75;
    }
    events.end(Signals::received() ? 128 + Signals::received() : ended);
}

/// On the job's thread.
void WatchBatch::take(const QJsonObject& event, Process& job)
{
    const auto place = m_items.constFind(event.value(u"source").toString());
    if (place == m_items.cend())
        return;
    WatchedResult& result = m_results.at(static_cast<std::size_t>(*place));
    if (m_fault.isNull()) {
        try {
            m_journal.append(event.value(u"type") == u"begin"_s ? begun(event, *place) : event);
        } catch (const std::runtime_error& error) {
            m_fault = QString::fromUtf8(error.what());
            m_isNoted = false;
            result.wantsRoom = true;
            job.stop();
        }
    }
    m_events->take(event);
    takeOutcome(event, result, job);
}

QJsonObject WatchBatch::begun(QJsonObject event, qsizetype item) const
{
    const QString path = event.value(u"source").toString();
    const OutputNames names(m_settings, m_options.conversion.run);
    for (const OutputFile& output : m_outputs) {
        if (output.filename != path)
            continue;
        QStringList kept;
        QStringList targets;
        for (const int page : targetsOf(output, m_settings)) {
            const QString target = names.path(output, page);
            targets.append(target);
            if (!Process::isFreeTarget(target) && !m_own.contains(target))
                kept.append(names.name(output, page));
        }
        event[u"targets"_s] = QJsonArray::fromStringList(targets);
        event[u"kept"_s] = QJsonArray::fromStringList(kept);
        event[u"number"_s] = output.number;
        event[u"running"_s] = output.firstRunning;
        event[u"outputs"_s] = targets.size();
    }
    event[u"state"_s] = WatchJournal::stateMembers(m_states.at(item));
    return event;
}

void WatchBatch::takeOutcome(const QJsonObject& event, WatchedResult& result, Process& job)
{
    const QString type = event.value(u"type").toString();
    const QString outcome = event.value(u"outcome").toString();
    const int page = event.value(u"page").toInt();
    const bool isPassed = event.value(u"passing").toBool();
    if (type == u"page" && outcome == u"written"_s)
        result.outputs.append(event.value(u"output").toString());
    if (type == u"source")
        if (const QString path = event.value(u"output").toObject().value(u"path").toString();
            !path.isEmpty())
            result.outputs.append(path);
    if (outcome == u"failed"_s)
        for (const QString& reason : textsIn(event.value(u"reasons"))) {
            result.reasons.append(page > 0 ? u"page %1: %2"_s.arg(page).arg(reason) : reason);
            result.wantsRoom = result.wantsRoom || (isPassed && isWantOfRoom(reason.toStdString()));
        }
    if (isPassed)
        result.outcome = Outcome::TryAgain;
    if (type != u"source") {
        if (result.wantsRoom)
            job.stop();
        return;
    }
    if (!m_fault.isNull()) {
        result.outcome = Outcome::TryAgain;
        result.reasons.append(m_fault);
    } else if (result.outcome != Outcome::TryAgain) {
        result.outcome = outcome == u"done"_s ? Outcome::Done
            : outcome == u"failed"_s          ? Outcome::Failed
                                              : Outcome::NotReached;
    }
}

} // namespace pagestack
