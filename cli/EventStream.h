#pragma once

#include "engine/fleet/RunState.h"

#include <QHash>
#include <QJsonObject>
#include <QString>

#include <functional>

namespace pagestack {

class Console;
struct Options;

/// The events of a run (docs/events.schema.json): a line each on standard output, in the state
/// file, or both. Its calls throw nothing; what cannot be noted ends the run.
class EventStream
{
public:
    /// What a run is told by.
    struct Run
    {
        QString plan {}; ///< its identity; empty without one
        QString shard {};
        QString options; ///< digest of them
        qsizetype sources = 0;
        qint64 pages = 0;
    };

    /// A source of it.
    struct Place
    {
        qint64 line = 0;
        QString pages; ///< of this part
        std::function<QStringList()>
            kept; ///< names of targets that are there and not the run's own
        std::function<QStringList()> makes {}; ///< paths of the others
    };

    /// `console` is borrowed, as `state` is, which may be null. `fail` is called, once, with the
    /// reason why events cannot be noted.
    EventStream(bool isPrinted, Console& console, RunState* state,
                std::function<void(const QString& reason)> fail);

    void begin(const Run& run);
    void addSource(const QString& path, const Place& place) { m_places.insert(path, place); }

    /// An event of the engine.
    void take(QJsonObject event);

    /// A source of which nothing is left to do.
    void addProven(const QString& path, int pages);
    /// One that is not converted, for `reason`.
    void addRefused(const QString& path, const QString& reason);

    void end(int exitCode);

private:
    void put(const QJsonObject& event, bool isNoted = true);
    void count(const QJsonObject& source);

    const bool m_isPrinted;
    Console& m_console;
    RunState* m_state;
    std::function<void(const QString&)> m_fail;
    QHash<QString, Place> m_places;
    QString m_id;
    qint64 m_total = 0; ///< sources
    qint64 m_totalPages = 0;
    struct
    {
        qint64 done = 0;
        qint64 failed = 0;
        qint64 proven = 0;
    } m_sources;
    struct
    {
        qint64 written = 0;
        qint64 failed = 0;
        qint64 skipped = 0;
        qint64 proven = 0;
    } m_pages;
};

} // namespace pagestack
