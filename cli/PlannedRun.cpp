#include "cli/PlannedRun.h"

#include "cli/OptionTable.h"
#include "engine/files/FileState.h"
#include "engine/options/PageChoice.h"
#include "engine/settings/OutputCodes.h"

#include <QFile>

#include <cerrno>
#include <system_error>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Of the source, in the order of its targets.
    QList<int> plannedPages(const PlanSource& source)
    {
        return source.pages.isEmpty() ? QList<int>()
                                      : PageChoice(source.pages).pages(source.pagesCounted);
    }

} // namespace

QString PlannedRun::Item::pages() const
{
    return pageRangesText(plannedPages(source).mid(part.from, part.to - part.from));
}

PlannedRun readPlannedRun(const Options& options)
{
    PlanReader reader(options.planFile);
    PlannedRun run { .head = reader.head(), .identity = reader.end().identity, .items = {} };
    const ConversionOptions& chosen = run.head.options;
    const bool isDivisible = chosen.outputType != OutputType::Tiff || chosen.isSplit;
    const qint64 total = reader.end().pages;
    const Shard& shard = options.shard;
    reader.skipTo(shard.start(total));
    for (qint64 before = reader.pagesBefore(); auto source = reader.next();
         before = reader.pagesBefore()) {
        const auto part = shard.partOf(before, source->pageCount, isDivisible, total);
        if (part)
            run.items.push_back({ std::move(*source), *part });
        else if (shard.index + 1 < shard.count
                 && before > Shard { shard.index + 1, shard.count }.start(total))
            break; // all that follows belongs to later parts
    }
    return run;
}

PlanHead planHead(const Options& options, const QString& outputFolder)
{
    const QStringList policies = optionRow(u"on-exists")->value.split(u'|');
    return { .options = options.conversion,
             .outputFolder = outputFolder,
             .existingFiles = policies.at(static_cast<int>(options.onExists)) };
}

Options withPlan(Options options, const PlanHead& head)
{
    options.conversion = head.options;
    options.outputFolder = head.outputFolder;
    options.onExists
        = OnExists { choiceOf(head.existingFiles, optionRow(u"on-exists")->value, u"policy"_s) };
    return options;
}

Source sourceOf(const PlannedRun::Item& item)
{
    return { .path = item.source.path,
             .shown = item.source.shown,
             .foundIn = item.source.foundIn,
             .pageChoice = item.pages() };
}

QString takePlan(OutputFile& output, const PlannedRun::Item& item)
{
    const PlanSource& source = item.source;
    output.subfolder = source.subfolder;
    output.pages = plannedPages(source);
    output.firstRunning = source.running;
    output.isNamed = true;
    const FileItem& file = *output.fileItems.constFirst();
    if (source.pages.isEmpty() && source.pagesCounted > 0)
        return source.fault.isEmpty() ? u"no page of it is planned"_s : source.fault;
    errno = 0;
    const auto state = fileState(QFile::encodeName(source.path));
    if (!state && errno != ENOENT && errno != ENOTDIR)
        return u"it cannot be looked up: "_s
            + QString::fromStdString(std::generic_category().message(errno));
    if (!state)
        return u"it was planned, and is not there"_s;
    if (file.pages() == 0 && source.pagesCounted > 0 && !file.fault().isEmpty())
        return file.fault();
    const bool isSame = state->sizeBytes == source.sizeBytes
        && state->modifiedNs == source.modifiedNs && file.pages() == source.pagesCounted;
    return isSame ? QString() : u"it has changed since it was planned"_s;
}

} // namespace pagestack
