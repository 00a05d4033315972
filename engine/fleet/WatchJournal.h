#pragma once

#include "engine/files/FileDigest.h"
#include "engine/files/FileState.h"

#include <QByteArray>
#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

namespace pagestack {

/// The file in which a watched folder's files in hand are noted, so that a restart neither loses
/// nor doubles one. It has the events of docs/events.schema.json, of which "begin" has more, and:
///     {"type":"watch","format":1,"options":DIGEST,"running":n}    first; n is the next number
///     {"type":"moving","source":..,"to":..,"reason":..,"state":[..]}    is put away
///     {"type":"moved","source":..}    nothing more is in hand
/// Lines are only appended; now and then it is begun anew with those that are in hand. One thread
/// at a time; one program has it.
class WatchJournal
{
public:
    /// What is noted of a file.
    struct Known
    {
        std::optional<FileDigest> digest {}; ///< of the source
        std::optional<FileIdentity> identity {};
        int number = 0; ///< behind the names of the outputs
        int running = 1; ///< number of the first of them
        QSet<QString> targets {}; ///< paths
        QStringList kept {}; ///< names at its targets that others have
        QHash<QString, FileDigest> outputs {}; ///< written, by path
        bool isDone = false;
        bool isBegunHere = false; ///< not by a former program
        QString movedTo {}; ///< empty: it is not put away yet
        QString reason {}; ///< text for the file of reasons; empty: it is done
        std::optional<FileState> state {}; ///< when it was to be put away
    };

    /// Opens or makes the file at `path`, and reads it. Throws std::runtime_error when it cannot be
    /// read or written, when another program has it, or when it has files in hand with other
    /// options.
    WatchJournal(const QString& path, const QString& options);
    ~WatchJournal();
    WatchJournal(const WatchJournal&) = delete;
    WatchJournal& operator=(const WatchJournal&) = delete;

    /// Null when nothing is in hand of the file at `path`.
    const Known* known(const QString& path) const;
    QStringList inHand() const { return m_known.keys(); } ///< paths

    /// Paths that files in hand are still to be written to; not those of `paths`.
    QStringList givenAway(const QSet<QString>& paths) const;

    /// The running number of the next new output.
    int nextRunning() const { return m_running; }

    /// Appends a line, at once. Of a "begin", `outputs` is how many running numbers it takes.
    /// Throws std::runtime_error; it is known all the same.
    void append(const QJsonObject& event);

    /// As a "begin" and a "moving" have it.
    static QJsonArray stateMembers(const FileState& state);

    void noteMoving(const QString& path, const FileState& state, const QString& to,
                    const QString& reason);
    void noteMoved(const QString& path);

    /// Writes it anew when it has grown and little of it is in hand; nothing when there is no room
    /// for that. Throws std::runtime_error when another program has taken it then.
    void shorten();

private:
    void open();
    void read();
    void take(const QJsonObject& event, bool isHere);
    void takeOutput(const QString& path, const QString& output, const FileDigest& digest);
    void put(const QByteArray& bytes);
    QByteArray head() const;
    static QByteArray linesOf(const QString& path, const Known& known);

    const QString m_path;
    const QString m_options;
    int m_file = -1;
    qint64 m_size = 0;
    bool m_isCut = false; ///< the last line may have no end
    int m_running = 1;
    QHash<QString, Known> m_known; ///< by path
};

} // namespace pagestack
