#include "cli/EventStream.h"

#include "cli/Console.h"
#include "engine/fleet/JsonLines.h"
#include "engine/support/Info.h"

#include <QDateTime>
#include <QJsonArray>
#include <QSysInfo>
#include <QUuid>

#include <algorithm>
#include <stdexcept>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int formatNumber = 1;

    QString now() { return QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs); }

} // namespace

EventStream::EventStream(bool isPrinted, Console& console, RunState* state,
                         std::function<void(const QString& reason)> fail)
    : m_isPrinted(isPrinted)
    , m_console(console)
    , m_state(state)
    , m_fail(std::move(fail))
    , m_id(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
}

void EventStream::put(const QJsonObject& event, bool isNoted)
{
    if (m_isPrinted && event.value(u"type") != u"begin"_s)
        m_console.print(QString::fromUtf8(jsonLine(event)));
    if (!m_state || !isNoted)
        return;
    try {
        m_state->append(event);
    } catch (const std::runtime_error& error) {
        m_state = nullptr;
        m_fail(QString::fromUtf8(error.what()));
    }
}

void EventStream::begin(const Run& run)
{
    m_total = run.sources;
    m_totalPages = run.pages;
    put({ { u"type"_s, u"run"_s },
          { u"format"_s, formatNumber },
          { u"id"_s, m_id },
          { u"program"_s, u"Pagestack "_s + version.toString() },
          { u"plan"_s, run.plan },
          { u"shard"_s, run.shard },
          { u"options"_s, run.options },
          { u"host"_s, QSysInfo::machineHostName() },
          { u"pid"_s, static_cast<qint64>(::getpid()) },
          { u"started"_s, now() },
          { u"sources"_s, static_cast<qint64>(run.sources) },
          { u"pages"_s, run.pages } });
}

void EventStream::take(QJsonObject event)
{
    const QString type = event.value(u"type").toString();
    const auto place = m_places.constFind(event.value(u"source").toString());
    if (place != m_places.cend()) {
        event[u"line"_s] = place->line;
        if (type != u"page")
            event[u"pages"_s] = place->pages;
        if (type == u"begin" && m_state)
            event[u"kept"_s] = QJsonArray::fromStringList(place->kept());
        if (type == u"begin" && m_state && place->makes)
            event[u"makes"_s] = QJsonArray::fromStringList(place->makes());
    }
    if (type == u"source")
        count(event);
    put(event);
}

void EventStream::count(const QJsonObject& source)
{
    const QString outcome = source.value(u"outcome").toString();
    m_sources.done += outcome == u"done" ? 1 : 0;
    m_sources.failed += outcome == u"failed" ? 1 : 0;
    m_pages.written += source.value(u"written").toInteger();
    m_pages.failed += source.value(u"failed").toInteger();
    m_pages.skipped += source.value(u"skipped").toInteger();
}

void EventStream::addProven(const QString& path, int pages)
{
    const Place place = m_places.value(path);
    ++m_sources.proven;
    m_pages.proven += pages;
    put({ { u"type"_s, u"source"_s },
          { u"line"_s, place.line },
          { u"source"_s, path },
          { u"pages"_s, place.pages },
          { u"outcome"_s, u"proven"_s },
          { u"written"_s, 0 },
          { u"failed"_s, 0 },
          { u"skipped"_s, 0 },
          { u"reasons"_s, QJsonArray() },
          { u"warnings"_s, QJsonArray() } },
        false);
}

void EventStream::addRefused(const QString& path, const QString& reason)
{
    take({ { u"type"_s, u"source"_s },
           { u"source"_s, path },
           { u"outcome"_s, u"failed"_s },
           { u"written"_s, 0 },
           { u"failed"_s, 0 },
           { u"skipped"_s, 0 },
           { u"reasons"_s, QJsonArray { reason } },
           { u"warnings"_s, QJsonArray() } });
}

void EventStream::end(int exitCode)
{
    const qint64 dealt = m_pages.written + m_pages.failed + m_pages.skipped + m_pages.proven;
    const qint64 met = m_sources.done + m_sources.failed + m_sources.proven;
    put({ { u"type"_s, u"summary"_s },
          { u"run"_s, m_id },
          { u"ended"_s, now() },
          { u"exit"_s, exitCode },
          { u"sources"_s,
            QJsonObject { { u"done"_s, m_sources.done },
                          { u"failed"_s, m_sources.failed },
                          { u"proven"_s, m_sources.proven },
                          { u"notReached"_s, std::max<qint64>(0, m_total - met) } } },
          { u"pages"_s,
            QJsonObject { { u"written"_s, m_pages.written },
                          { u"failed"_s, m_pages.failed },
                          { u"skipped"_s, m_pages.skipped },
                          { u"proven"_s, m_pages.proven },
                          { u"notReached"_s, std::max<qint64>(0, m_totalPages - dealt) } } } });
}

} // namespace pagestack
