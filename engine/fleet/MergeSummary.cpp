#include "engine/fleet/MergeSummary.h"

#include "engine/fleet/OutputCheck.h"
#include "engine/support/Info.h"

#include <QJsonArray>

#include <iterator>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// "a.tif", "a.tif, page 3", "a.tif, pages 1-3".
    QString placeText(const QString& shown, const QString& pages)
    {
        return pages.isEmpty() ? shown : shown + u", "_s + pagesPhrase(pages);
    }

    QJsonObject placeMembers(const MergedSource& source, const QString& pages)
    {
        return { { u"line"_s, source.plan.line },
                 { u"source"_s, source.plan.path },
                 { u"pages"_s, pages } };
    }

    QString momentText(const QDateTime& moment)
    {
        return moment.isValid() ? moment.toUTC().toString(Qt::ISODateWithMs) : QString();
    }

} // namespace

QString counted(qint64 number, const QString& noun)
{
    return u"%1 %2%3"_s.arg(number).arg(noun, number == 1 ? u""_s : u"s"_s);
}

void MergeSummary::add(const MergedSource& source, const QStringList& states)
{
    countPages(source);
    const auto addSome
        = [&](FaultList& list, const QString& word, const std::vector<MergedSource::Some>& found) {
              for (const auto& [pages, reason] : found) {
                  QJsonObject members = placeMembers(source, pages);
                  members[u"reason"_s] = reason;
                  list.add(members,
                           u"%1: %2: %3"_s.arg(word, placeText(source.plan.shown, pages), reason));
              }
              return !found.empty();
          };
    const bool isIncomplete = addSome(m_gaps, u"missing"_s, source.gaps());
    const bool isFailed = addSome(m_failures, u"failed"_s, source.failures());
    ++(isFailed ? m_sources.failed : isIncomplete ? m_sources.incomplete : m_sources.done);
    for (const MergedSource::Twice& twice : source.twice) {
        const QString pages = source.pagesText(twice.places);
        const QStringList both { states.at(twice.state), states.at(twice.otherState) };
        m_outputsTwice += source.isKeptTogether ? 1 : std::ssize(twice.places);
        QJsonObject members = placeMembers(source, pages);
        members[u"states"_s] = QJsonArray::fromStringList(both);
        m_twice.add(members,
                    u"done twice: %1: by %2 and by %3"_s.arg(placeText(source.plan.shown, pages),
                                                             both.first(), both.last()));
    }
}

void MergeSummary::countPages(const MergedSource& source)
{
    qint64 written = 0;
    for (const MergedPage& page : source.pages) {
        if (page.number == 0)
            continue;
        switch (page.outcome) {
        case MergedPage::Outcome::Missing:
            ++m_pages.missing;
            break;
        case MergedPage::Outcome::Failed:
            ++m_pages.failed;
            break;
        case MergedPage::Outcome::Skipped:
            ++m_pages.skipped;
            break;
        case MergedPage::Outcome::Written:
            ++written;
            break;
        }
    }
    m_pages.written += written;
    m_outputs += source.isKeptTogether ? (source.gathered ? 1 : 0) : written;
}

void MergeSummary::addForeign(const MergedRun::Foreign& foreign)
{
    m_foreignEvents += foreign.events;
    m_foreign.add({ { u"state"_s, foreign.state },
                    { u"events"_s, foreign.events },
                    { u"reason"_s, foreign.reason } },
                  u"foreign: %1: %2: %3"_s.arg(foreign.state, counted(foreign.events, u"event"_s),
                                               foreign.reason));
}

bool MergeSummary::isSound() const
{
    return m_gaps.count() + m_failures.count() + m_twice.count() + m_foreign.count() == 0;
}

QJsonObject MergeSummary::toJson(const MergedRun& run, const OutputCheck* check, int exitCode) const
{
    QJsonObject duplicates = m_twice.toJson();
    duplicates[u"outputs"_s] = m_outputsTwice;
    QJsonObject foreign = m_foreign.toJson();
    foreign[u"events"_s] = m_foreignEvents;
    QJsonObject members { { u"type"_s, u"merge"_s },
                          { u"format"_s, 1 },
                          { u"program"_s, u"Pagestack "_s + version.toString() },
                          { u"plan"_s, run.end().identity },
                          { u"states"_s, run.states().size() },
                          { u"runs"_s, run.runs() },
                          { u"tornLines"_s, run.tornLines() },
                          { u"started"_s, momentText(run.started()) },
                          { u"ended"_s, momentText(run.ended()) },
                          { u"sources"_s,
                            QJsonObject { { u"planned"_s, run.end().sources },
                                          { u"done"_s, m_sources.done },
                                          { u"failed"_s, m_sources.failed },
                                          { u"incomplete"_s, m_sources.incomplete } } },
                          { u"pages"_s,
                            QJsonObject { { u"planned"_s, run.end().pages },
                                          { u"written"_s, m_pages.written },
                                          { u"skipped"_s, m_pages.skipped },
                                          { u"failed"_s, m_pages.failed },
                                          { u"missing"_s, m_pages.missing } } },
                          { u"outputs"_s,
                            QJsonObject { { u"planned"_s, run.end().targets },
                                          { u"written"_s, m_outputs } } },
                          { u"gaps"_s, m_gaps.toJson() },
                          { u"failures"_s, m_failures.toJson() },
                          { u"duplicates"_s, duplicates },
                          { u"foreign"_s, foreign },
                          { u"exit"_s, exitCode } };
    if (check != nullptr)
        members[u"verified"_s] = check->toJson();
    return members;
}

QStringList MergeSummary::lines(const MergedRun& run, const OutputCheck* check) const
{
    QStringList lines;
    for (const FaultList* list : { &m_gaps, &m_failures, &m_twice, &m_foreign })
        list->addTo(lines);
    if (check != nullptr)
        check->faults().addTo(lines);
    lines.append(
        u"%1 by %2"_s.arg(counted(run.states().size(), u"state"_s), counted(run.runs(), u"run"_s)));
    if (run.tornLines() > 0)
        lines.append(u"%1 of them cut off"_s.arg(counted(run.tornLines(), u"line"_s)));
    lines.append(u"%1 of %2 done, %3 failed, %4 incomplete"_s.arg(m_sources.done)
                     .arg(counted(run.end().sources, u"source"_s))
                     .arg(m_sources.failed)
                     .arg(m_sources.incomplete));
    lines.append(
        u"%1 of %2 written, %3 skipped, %4 failed, %5 missing, in %6"_s.arg(m_pages.written)
            .arg(counted(run.end().pages, u"page"_s))
            .arg(m_pages.skipped)
            .arg(m_pages.failed)
            .arg(m_pages.missing)
            .arg(counted(m_outputs, u"output"_s)));
    if (check != nullptr)
        lines.append(u"%1 and %2 read back, %3 not as converted"_s.arg(
            counted(check->outputs(), u"output"_s), counted(check->sources(), u"source"_s),
            QString::number(check->faults().count())));
    return lines;
}

} // namespace pagestack
