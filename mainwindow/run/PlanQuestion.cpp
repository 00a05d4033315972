#include "mainwindow/run/PlanQuestion.h"

#include "engine/plan/RunPlan.h"
#include "engine/settings/Settings.h"
#include "mainwindow/run/RunControl.h"

#include <QDir>
#include <QLocale>
#include <QSet>

#include <algorithm>
#include <utility>

namespace pagestack {

namespace {

    constexpr std::size_t shownFindings = 4;

    QString sourceOf(const RunPlan& plan, qsizetype output)
    {
        return QDir::toNativeSeparators(plan.outputs().at(output).filename);
    }

    /// A line for each of the first findings, and one for the rest.
    template <typename Finding, typename Line>
    QStringList lines(const std::vector<Finding>& findings, Line line)
    {
        QStringList text;
        for (std::size_t i = 0; i < findings.size() && i < shownFindings; ++i)
            text.append(line(findings.at(i)));
        if (findings.size() > shownFindings)
            text.append(RunControl::tr("and %n more", nullptr,
                                       static_cast<int>(findings.size() - shownFindings)));
        return text;
    }

    /// Where outputs go.
    QString placeText(const Settings& settings)
    {
        return settings.outputFolderPath().isEmpty()
            ? RunControl::tr("beside their sources")
            : RunControl::tr("in %1").arg(QDir::toNativeSeparators(settings.outputFolderPath()));
    }

} // namespace

bool isSolvedBy(const RunPlan& numbered)
{
    return numbered.shared().empty() && numbered.replacedSources().empty();
}

QString planQuestion(const RunPlan& plan, const RunPlan& numbered)
{
    QStringList text { RunControl::tr(
        "Some outputs of this run would replace each other or a file of the list:") };
    text += lines(plan.shared(), [&](const RunPlan::Shared& shared) {
        if (shared.first == shared.target.output)
            return RunControl::tr("%1 would be written by several pages of %2")
                .arg(plan.name(shared.target), sourceOf(plan, shared.first));
        return RunControl::tr("%1 would be written by %2 and by %3")
            .arg(plan.name(shared.target), sourceOf(plan, shared.first),
                 sourceOf(plan, shared.target.output));
    });
    text += lines(plan.replacedSources(), [&](const RunPlan::Replaced& replaced) {
        return RunControl::tr("%1 would be replaced by output of %2")
            .arg(sourceOf(plan, replaced.source), sourceOf(plan, replaced.target.output));
    });
    if (!isSolvedBy(numbered))
        return text.join(u'\n');
    const PlannedTarget example = plan.shared().empty() ? plan.replacedSources().front().target
                                                        : plan.shared().front().target;
    text += QString();
    text += RunControl::tr("With a number, %1 of %2 is written as %3.")
                .arg(plan.name(example), sourceOf(plan, example.output), numbered.name(example));
    return text.join(u'\n');
}

bool hasOwnSource(const RunPlan& plan)
{
    return std::ranges::any_of(plan.existing(), [&](const PlannedTarget& target) {
        const OutputFile& output = plan.outputs().at(target.output);
        return plan.names().path(output, target.page) == output.filename;
    });
}

int imagesOf(int pages, const Settings& settings)
{
    return isKeptTogether(settings) ? std::min(pages, 1) : pages;
}

QString planSummary(const RunPlan& plan, const QList<OutputFile>& outputs, bool skipsExisting,
                    const Settings& settings, const RunWork& work, std::optional<quint64> bytes)
{
    QSet<std::pair<qsizetype, int>> left;
    if (skipsExisting)
        for (const PlannedTarget& target : plan.existing())
            left.insert({ target.output, target.page });
    const bool isTogether = isKeptTogether(settings);
    qsizetype images = -left.size();
    QString example;
    for (qsizetype i = 0; i < outputs.size(); ++i) {
        const OutputFile& output = outputs.at(i);
        images += imagesOf(static_cast<int>(output.pages.size()), settings);
        for (auto page = output.pages.begin(); page != output.pages.end() && example.isNull();
             ++page)
            if (const int shown = isTogether ? 0 : *page; !left.contains({ i, shown }))
                example = plan.names().name(output, shown);
    }
    QString text = RunControl::tr("%Ln file(s)", nullptr, static_cast<int>(outputs.size()))
        + RunControl::tr(", %Ln page(s)", nullptr, static_cast<int>(work.pages))
        + RunControl::tr(": %Ln image(s) ", nullptr, static_cast<int>(images))
        + placeText(settings);
    if (!example.isNull())
        text += RunControl::tr(", such as %1").arg(example);
    if (bytes)
        text += RunControl::tr(", %1 at most")
                    .arg(QLocale().formattedDataSize(static_cast<qint64>(*bytes), 1,
                                                     QLocale::DataSizeSIFormat));
    return text;
}

QString existingQuestion(const RunPlan& plan)
{
    const auto count = plan.existing().size();
    QStringList text {
        count == 1
            ? RunControl::tr("A file of this run exists already:")
            : RunControl::tr("%1 files of this run exist already:").arg(QLocale().toString(count))
    };
    text += lines(plan.existing(), [&](const PlannedTarget& target) {
        const OutputFile& output = plan.outputs().at(target.output);
        const QString path = plan.names().path(output, target.page);
        const QString shown = QDir::toNativeSeparators(path);
        return path == output.filename ? RunControl::tr("%1, which is the source itself").arg(shown)
                                       : shown;
    });
    return text.join(u'\n');
}

} // namespace pagestack
