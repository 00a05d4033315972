#include "engine/fleet/LineReplay.h"

#include "engine/fleet/RunState.h"
#include "engine/options/PageChoice.h"
#include "engine/support/Paths.h"

#include <QJsonArray>

#include <algorithm>
#include <stdexcept>
#include <tuple>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    using Outcome = MergedPage::Outcome;
    using Ending = MergedPage::Ending;

    constexpr int mostPages = 1 << 26; // whose directories alone would take more than a gigabyte

    QString joinedTexts(const QJsonObject& event, QStringView name)
    {
        QStringList texts;
        for (const QJsonValue text : event.value(name).toArray())
            texts.append(text.toString());
        return texts.join(u"; "_s);
    }

    Ending endingOf(const QString& outcome)
    {
        return outcome == u"done"   ? Ending::Done
            : outcome == u"failed"  ? Ending::Failed
            : outcome == u"stopped" ? Ending::Stopped
                                    : Ending::None;
    }

    bool isBetter(const MergedPage& a, const MergedPage& b)
    {
        return std::tie(a.outcome, a.ending) > std::tie(b.outcome, b.ending);
    }

} // namespace

LineReplay::LineReplay(PlanSource plan, const PlanHead& head)
{
    if (plan.pageCount > mostPages || plan.pagesCounted > mostPages)
        throw std::invalid_argument("a source has too many pages");
    if (!plan.pages.isEmpty())
        m_numbers = PageChoice(plan.pages).pages(plan.pagesCounted);
    if (m_numbers.size() != plan.pageCount
        || (plan.targets.size() != plan.pageCount && plan.targets.size() != 1))
        throw std::invalid_argument("the pages of a source contradict each other");
    m_source.folder = head.outputFolder.isEmpty() ? folderPart(plan.path)
        : plan.subfolder.isEmpty()                ? head.outputFolder
                                                  : joinedPath(head.outputFolder, plan.subfolder);
    m_source.isKeptTogether = plan.targets.size() < plan.pageCount;
    m_source.plan = std::move(plan);
    m_source.pages.resize(std::max<std::size_t>(static_cast<std::size_t>(m_numbers.size()), 1));
    for (qsizetype i = 0; i < m_numbers.size(); ++i)
        m_source.pages[static_cast<std::size_t>(i)].number = m_numbers.at(i);
    m_told.resize(m_source.pages.size());
}

QString LineReplay::take(int state, const QJsonObject& event)
{
    if (state != m_state)
        endState();
    m_state = state;
    if (event.value(u"source").toString() != m_source.plan.path)
        return u"its source is not that of the plan"_s;
    const QString type = event.value(u"type").toString();
    if (type == u"page")
        return takePage(event);
    if (QString fault = findPlaces(event.value(u"pages").toString()); !fault.isNull())
        return fault;
    if (type == u"source")
        return takeSource(event);
    takeBegin(event);
    return {};
}

void LineReplay::takeBegin(const QJsonObject& event)
{
    const std::optional<FileDigest> digest = digestIn(event);
    const bool isOther = m_begun && *m_begun != digest;
    m_begun = digest;
    beginPart();
    for (const std::size_t place : m_places) {
        Told& page = told(place);
        page.isOfThisTry = false;
        page.isGathered = false;
        if (isOther) { // the pages before are of another file
            page.page.outcome = Outcome::Missing;
            page.page.digest.reset();
        }
    }
}

/// The pages of an event, as places.
QString LineReplay::findPlaces(const QString& pages)
{
    m_places.clear();
    if (pages == m_source.plan.pages) {
        for (std::size_t i = 0; i < m_told.size(); ++i)
            m_places.push_back(i);
        return {};
    }
    QString foreign = u"the plan has no pages '%1' of its source"_s.arg(pages);
    try {
        const PageChoice choice(pages);
        if (pages.isEmpty() || !choice.missing(m_source.plan.pagesCounted).isNull())
            return foreign;
        for (const int number : choice.pages(m_source.plan.pagesCounted)) {
            const auto found = std::ranges::lower_bound(m_numbers, number);
            if (found == m_numbers.end() || *found != number)
                return foreign;
            m_places.push_back(static_cast<std::size_t>(found - m_numbers.begin()));
        }
        return {};
    } catch (const std::runtime_error&) {
        return foreign;
    }
}

LineReplay::Told& LineReplay::told(std::size_t place)
{
    Told& told = m_told.at(place);
    if (told.page.state < 0) {
        told.page.number = m_source.pages.at(place).number;
        told.page.state = m_state;
        m_touched.push_back(place);
    }
    return told;
}

QString LineReplay::takePage(const QJsonObject& event)
{
    const int number = event.value(u"page").toInt();
    const auto found = std::ranges::lower_bound(m_numbers, number);
    if (found == m_numbers.end() || *found != number)
        return u"the plan has no page %1 of its source"_s.arg(number);
    const auto place = static_cast<std::size_t>(found - m_numbers.begin());
    const QString outcome = event.value(u"outcome").toString();
    const bool isGathered = outcome == u"gathered";
    const bool isWritten = outcome == u"written";
    if (!isGathered && !isWritten && outcome != u"failed" && outcome != u"skipped")
        return u"its outcome '%1' is not known"_s.arg(outcome);
    if (const QString path = event.value(u"output").toString(); path != m_source.targetPath(place))
        return u"the plan has '%1' for its output"_s.arg(m_source.targetPath(place));
    const std::optional<FileDigest> digest = isWritten ? digestIn(event) : std::nullopt;
    if (isWritten && !digest)
        return u"it has no size and digest"_s;
    Told& page = told(place);
    page.isOfThisTry = true;
    page.isGathered = isGathered;
    page.page.outcome = isGathered ? Outcome::Missing
        : isWritten                ? Outcome::Written
        : outcome == u"failed"     ? Outcome::Failed
                                   : Outcome::Skipped;
    page.page.isOfPart = false;
    page.page.digest = digest;
    page.page.reason = joinedTexts(event, outcome == u"failed" ? u"reasons" : u"warnings");
    m_source.isKeptTogether |= isGathered;
    return {};
}

QString LineReplay::takeSource(const QJsonObject& event)
{
    const QString outcome = event.value(u"outcome").toString();
    if (outcome == u"proven") // by a former run, which has told it
        return {};
    const Ending ending = endingOf(outcome);
    if (ending == Ending::None)
        return u"its outcome '%1' is not known"_s.arg(outcome);
    const QJsonObject output = event.value(u"output").toObject();
    if (!output.isEmpty()) {
        if (output.value(u"path").toString() != m_source.targetPath(0))
            return u"the plan has '%1' for its output"_s.arg(m_source.targetPath(0));
        const std::optional<FileDigest> digest = digestIn(output);
        if (!digest)
            return u"it has no size and digest"_s;
        m_source.isKeptTogether = true;
        m_gathered = digest;
    }
    if (const std::optional<FileDigest> digest = digestIn(event))
        m_digest = digest;
    beginPart();
    for (const std::size_t place : m_places)
        endPage(told(place), ending, event);
    Told& first = told(m_places.front());
    first.page.ending = ending;
    first.page.partReason = ending == Ending::Failed ? joinedTexts(event, u"reasons") : QString();
    first.page.partWarning = joinedTexts(event, u"warnings");
    return {};
}

/// The end of a try at the part of a page.
void LineReplay::endPage(Told& told, Ending ending, const QJsonObject& event)
{
    MergedPage& page = told.page;
    const bool isWaiting = !told.isOfThisTry || told.isGathered;
    if (isWaiting && page.number > 0) {
        if (event.contains(u"output")) {
            page.outcome = Outcome::Written;
        } else if (ending == Ending::Failed
                   && (told.isGathered || page.outcome < Outcome::Skipped)) {
            page.outcome = Outcome::Failed;
            page.digest.reset();
            page.reason = joinedTexts(event, u"reasons");
            page.isOfPart = !told.isOfThisTry;
        } else if (ending == Ending::Done
                   && event.value(u"skipped").toInteger() >= std::ssize(m_places)) {
            page.outcome = Outcome::Skipped;
        }
    }
    told.isOfThisTry = false;
    told.isGathered = false;
}

/// The part that the part of this first page was tried as last.
int LineReplay::lastPart(int part)
{
    while (m_told.at(static_cast<std::size_t>(part)).laterPart >= 0)
        part = m_told.at(static_cast<std::size_t>(part)).laterPart;
    return part;
}

/// The pages of the event in hand are a part now, which takes the place of those that had them.
void LineReplay::beginPart()
{
    const auto first = static_cast<int>(m_places.front());
    for (const std::size_t place : m_places) {
        Told& page = told(place);
        const int before = page.part < 0 ? -1 : lastPart(page.part);
        if (static_cast<int>(place) == first)
            page.laterPart = -1;
        if (before >= 0 && before != first)
            m_told.at(static_cast<std::size_t>(before)).laterPart = first;
        page.part = first;
    }
    MergedPage& page = m_told.at(m_places.front()).page;
    page.ending = Ending::Open;
    page.partReason.clear();
    page.partWarning.clear();
}

/// What the state in hand says of parts is said of their pages.
void LineReplay::endState()
{
    for (const std::size_t place : m_touched) {
        Told& told = m_told.at(place);
        const int part = told.part < 0 ? -1 : lastPart(told.part);
        if (part < 0)
            told.page.ending = Ending::Open;
        else if (part != static_cast<int>(place))
            told.page.ending = m_told.at(static_cast<std::size_t>(part)).page.ending;
        if (part == static_cast<int>(place))
            continue;
        told.page.partReason.clear();
        told.page.partWarning.clear();
    }
    addState();
}

/// Puts what the state in hand says beside what those before it say.
void LineReplay::addState()
{
    std::optional<MergedSource::Twice> twice;
    bool isUsed = false;
    std::ranges::sort(m_touched);
    for (const std::size_t place : m_touched) {
        const MergedPage page = std::exchange(m_told.at(place), {}).page;
        MergedPage& known = m_source.pages.at(place);
        if (page.outcome == Outcome::Written && known.outcome == Outcome::Written) {
            if (!twice || twice->state != known.state) {
                if (twice)
                    m_source.twice.push_back(*twice);
                twice = { .state = known.state, .otherState = m_state };
            }
            twice->places.push_back(place);
        }
        if (isBetter(page, known)) {
            isUsed |= page.outcome == Outcome::Written;
            known = page;
        }
    }
    if (twice)
        m_source.twice.push_back(*twice);
    m_touched.clear();
    if (isUsed || !m_source.digest) {
        m_source.hasChanged |= isUsed && m_source.digest && m_digest
            && *m_source.digest != *m_digest
            && std::ranges::any_of(m_source.pages, [this](const MergedPage& page) {
                                   return page.outcome == Outcome::Written && page.state != m_state;
                               });
        m_source.digest = m_digest ? m_digest : m_source.digest;
        m_source.gathered = m_gathered ? m_gathered : m_source.gathered;
    }
    m_begun.reset();
    m_digest.reset();
    m_gathered.reset();
}

MergedSource LineReplay::result()
{
    endState();
    return std::move(m_source);
}

} // namespace pagestack
