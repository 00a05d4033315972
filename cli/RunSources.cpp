#include "cli/RunSources.h"

#include "cli/Console.h"
#include "cli/EventStream.h"
#include "cli/Options.h"
#include "cli/PlannedRun.h"
#include "cli/Preflight.h"
#include "cli/Report.h"
#include "cli/Resumption.h"
#include "engine/files/PosixFile.h"
#include "engine/job/Process.h"
#include "engine/plan/ChosenPages.h"
#include "engine/settings/Settings.h"
#include "engine/support/Signals.h"
#include "engine/threads/StopScope.h"

#include <memory>

using namespace Qt::StringLiterals;

namespace pagestack {

bool RunSources::lookUp()
{
    if (m_planned) {
        for (const PlannedRun::Item& item : m_planned->items) {
            m_sources.append(sourceOf(item));
            m_lines.append(item.source.line);
        }
        return true; // a part of a plan may be empty
    }
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
    for (qsizetype i = 0; i < m_sources.size(); ++i)
        m_lines.append(i);
    return !m_sources.isEmpty();
}

/// Counts the pages of every source.
void RunSources::countPages()
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

/// Names what is planned as the plan does; what is not as it was planned is left out.
void RunSources::nameOutputs(const Settings& settings)
{
    if (Signals::received() || !(m_planned || !m_options.stateFile.isEmpty()))
        return;
    const OutputNames names(settings, m_options.conversion.run);
    m_outputs = names.completed(m_outputs);
    std::vector<qsizetype> left;
    for (qsizetype i = 0; i < m_outputs.size(); ++i) {
        OutputFile& output = m_outputs[i];
        output.isNamed = true;
        if (m_planned) {
            const PlannedRun::Item& item = m_planned->items.at(static_cast<std::size_t>(i));
            const QString fault = takePlan(output, item);
            if (!fault.isNull()) {
                m_leftOut.push_back({ .path = output.filename,
                                      .line = item.source.line,
                                      .pages = item.pages(),
                                      .reason = fault });
                addFault(m_sources.at(i).shown, fault);
                continue;
            }
            // What was asked for and is not there; what is wrong with the file a run tells itself.
            if (const QString& lack = item.source.fault;
                !lack.isEmpty() && lack != output.fileItems.constFirst()->fault())
                addFault(m_sources.at(i).shown, lack);
            QStringList targets;
            const bool isTogether = isKeptTogether(settings);
            for (const int page : isTogether && !output.pages.isEmpty() ? QList<int> { 0 }
                     : isTogether                                       ? QList<int>()
                                                                        : output.pages)
                targets.append(names.name(output, page));
            if (targets != item.source.targets)
                throw OutputRefused(
                    u"the plan is of another version of the program, whose names differ"_s);
        }
        left.push_back(i);
    }
    keepOnly(left);
}

void RunSources::addFault(const QString& shown, const QString& reason)
{
    m_hasFailures = true;
    m_isPassing = m_isPassing || isPassing(reason.toStdString());
    m_console.trouble(messageText({ .reason = reason }, shown));
}

/// Of sources and what belongs to them.
void RunSources::keepOnly(const std::vector<qsizetype>& left)
{
    QList<Source> sources;
    QList<OutputFile> outputs;
    QList<qint64> lines;
    for (const qsizetype i : left) {
        sources.append(m_sources.at(i));
        outputs.append(m_outputs.at(i));
        lines.append(m_lines.at(i));
    }
    m_sources = sources;
    m_outputs = outputs;
    m_lines = lines;
}

void RunSources::leaveOutDone(const RunState& state, const Settings& settings)
{
    if (Signals::received())
        return;
    const StopScope scope([] { return Signals::received() != 0; });
    const OutputNames names(settings, m_options.conversion.run);
    std::vector<qsizetype> left;
    for (qsizetype i = 0; i < m_outputs.size() && !Signals::received(); ++i) {
        OutputFile& output = m_outputs[i];
        if (output.fileItems.isEmpty())
            continue;
        FileItem& item = *output.fileItems.constFirst();
        const QList<int> wanted = chosenPages(item, m_options.conversion.run);
        const Resumption found
            = Resumption::of(output, wanted, state, names, isKeptTogether(settings));
        if (Signals::received())
            break; // what was not read to its end proves nothing
        for (const QString& remark : found.remarks)
            m_console.trouble(remark);
        m_own.unite(found.own);
        if (m_options.conversion.run.writesChecksums)
            m_proven.insert(m_proven.end(), found.proven.begin(), found.proven.end());
        if (found.isDone) {
            m_leftOut.push_back({ .path = output.filename,
                                  .line = m_lines.at(i),
                                  .pages = pageRangesText(wanted),
                                  .pageCount = found.provenPages });
            continue;
        }
        m_parts.insert(output.filename, pageRangesText(wanted));
        if (found.provenPages > 0)
            item.setPageChoice(pageRangesText(found.pages));
        left.push_back(i);
    }
    keepOnly(left);
}

QHash<QString, QString> RunSources::choices() const
{
    QHash<QString, QString> all;
    for (qsizetype i = 0; i < m_outputs.size(); ++i) { // fewer after a signal
        QString pages;
        for (const auto& item : m_outputs.at(i).fileItems)
            if (const QList<int> chosen = chosenPages(*item, m_options.conversion.run);
                chosen.size() < item->pages())
                pages = m_parts.value(m_sources.at(i).path, pageRangesText(chosen));
        all.insert(m_sources.at(i).path, pages);
    }
    for (const LeftOut& source : m_leftOut)
        all.insert(source.path, source.pages);
    return all;
}

void RunSources::begin(EventStream& events, const Settings& settings,
                       const QString& optionsDigest) const
{
    EventStream::Run run {
        .plan = m_planned ? m_planned->identity : QString(u""_s),
        .shard = m_planned ? m_options.shard.text() : QString(u""_s),
        .options = optionsDigest,
        .sources = m_sources.size() + static_cast<qsizetype>(m_leftOut.size()),
        .pages = 0,
    };
    const auto names = std::make_shared<const OutputNames>(settings, m_options.conversion.run);
    const bool isTogether = isKeptTogether(settings);
    for (qsizetype i = 0; i < m_outputs.size(); ++i) {
        const OutputFile& output = m_outputs.at(i);
        QList<int> pages;
        for (const auto& item : output.fileItems)
            pages += chosenPages(*item, m_options.conversion.run);
        run.pages += pages.size();
        const auto targets = [this, output, pages, names, isTogether](bool isKept) {
            QStringList found;
            for (const int page : isTogether ? QList<int> { 0 } : pages) {
                const QString path = names->path(output, page);
                if (isKept == (!Process::isFreeTarget(path) && !m_own.contains(path)))
                    found.append(isKept ? names->name(output, page) : path);
            }
            return found;
        };
        events.addSource(output.filename,
                         { m_lines.at(i), m_parts.value(output.filename, pageRangesText(pages)),
                           [targets] { return targets(true); },
                           [targets] { return targets(false); } });
    }
    for (const LeftOut& source : m_leftOut) {
        run.pages += source.pageCount;
        events.addSource(source.path, { source.line, source.pages, {} });
    }
    events.begin(run);
    for (const LeftOut& source : m_leftOut) {
        if (source.reason.isNull())
            events.addProven(source.path, source.pageCount);
        else
            events.addRefused(source.path, source.reason);
    }
}

} // namespace pagestack
