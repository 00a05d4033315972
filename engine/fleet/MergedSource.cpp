#include "engine/fleet/MergedSource.h"

#include "engine/support/Paths.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    using Outcome = MergedPage::Outcome;
    using Ending = MergedPage::Ending;
    using Places = std::vector<std::size_t>;

    const std::array endingTexts { u"never begun"_s, u"begun and not ended"_s, u"stopped"_s,
                                   u"not told by a run that has ended"_s,
                                   u"not told by a run that has ended"_s };

    bool cannotBeRead(const PlanSource& plan)
    {
        return plan.pages.isEmpty() && !plan.fault.isEmpty();
    }

} // namespace

QString MergedSource::targetPath(std::size_t place) const
{
    return joinedPath(folder,
                      plan.targets.value(isKeptTogether ? 0 : static_cast<qsizetype>(place)));
}

QString MergedSource::pagesText(const std::vector<std::size_t>& places) const
{
    QList<int> numbers;
    for (const std::size_t place : places)
        if (pages.at(place).number > 0)
            numbers.append(pages.at(place).number);
    return pageRangesText(numbers);
}

QString pagesPhrase(const QString& pages)
{
    if (pages.isEmpty())
        return {};
    const bool isOne = std::ranges::all_of(pages, [](QChar c) { return c.isDigit(); });
    return (isOne ? u"page "_s : u"pages "_s) + pages;
}

std::vector<MergedSource::Some> MergedSource::gaps() const
{
    if (cannotBeRead(plan)) // nobody could do more
        return {};
    std::array<Places, endingTexts.size()> missing;
    bool isOpen = false;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const MergedPage& page = pages.at(i);
        const bool isDone
            = page.number > 0 ? page.outcome != Outcome::Missing : page.ending >= Ending::Failed;
        if (!isDone)
            missing.at(static_cast<std::size_t>(page.ending)).push_back(i);
        isOpen |= isDone && page.ending == Ending::Open;
    }
    std::vector<Some> gaps;
    for (std::size_t ending = 0; ending < missing.size(); ++ending)
        if (const bool isPage = !missing.at(ending).empty();
            isPage || (isOpen && ending == static_cast<std::size_t>(Ending::Open)))
            gaps.push_back({ pagesText(missing.at(ending)), endingTexts.at(ending) });
    return gaps;
}

std::vector<MergedSource::Some> MergedSource::failures() const
{
    std::vector<std::pair<QString, Places>> found; // by reason
    const auto placesOf = [&](const QString& reason) -> Places& {
        auto known = std::ranges::find(found, reason, &std::pair<QString, Places>::first);
        if (known == found.end())
            known = found.emplace(found.end(), reason, Places {});
        return known->second;
    };
    for (std::size_t i = 0; i < pages.size(); ++i)
        if (pages.at(i).outcome == Outcome::Failed)
            placesOf(pages.at(i).reason).push_back(i);
    for (const MergedPage& page : pages)
        if (!page.partReason.isEmpty())
            placesOf(page.partReason);
    if (hasChanged)
        placesOf(u"it has changed between its parts"_s);
    const bool isTold = std::ranges::any_of(
        found, [&](const auto& known) { return known.first.contains(plan.fault); });
    if (!plan.fault.isEmpty() && !(isTold || (cannotBeRead(plan) && !found.empty())))
        placesOf(plan.fault);
    std::vector<Some> failures;
    failures.reserve(found.size());
    for (const auto& [reason, places] : found)
        failures.push_back(
            { pagesText(places), reason.isEmpty() ? u"no reason is told"_s : reason });
    return failures;
}

} // namespace pagestack
