#pragma once

#include "engine/files/FileDigest.h"

#include <QHash>
#include <QJsonObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>

namespace pagestack {

/// Another run has the state in hand, which may be over soon.
class StateInUse : public std::runtime_error
{
public:
    using runtime_error::runtime_error;
};

/// The file in which a run notes what it does (docs/events.schema.json), so that the next one can
/// go on where it was ended, by whatever. Lines are only appended. One thread; one run at a time
/// has it.
class RunState
{
public:
    /// What a former run has noted of a source.
    struct Known
    {
        QString pages; ///< of this part of it
        bool isDone = false;
        std::optional<FileDigest> digest; ///< of the source
        QSet<QString>
            made; ///< paths of its outputs that were not there before anything was written
        QHash<int, FileDigest> written; ///< by page, of files of their own
        std::optional<FileDigest> gathered; ///< of the file that keeps its pages together
    };

    /// Opens or makes the file at `path`, and reads it. Throws std::runtime_error when it cannot be
    /// read or written, or when it is of another plan or other options, and StateInUse.
    RunState(const QString& path, const QString& plan, const QString& options);
    ~RunState();
    RunState(const RunState&) = delete;
    RunState& operator=(const RunState&) = delete;

    /// Null when nothing is noted of the source at `path`.
    const Known* known(const QString& path) const;

    /// Appends a line, at once. Throws std::runtime_error.
    void append(const QJsonObject& event);

private:
    void read(const QString& path, const QString& plan, const QString& options);
    void take(const QJsonObject& event);

    int m_file = -1;
    QHash<QString, Known> m_known;
};

/// As `digest` stands in events; none when that is not whole.
std::optional<FileDigest> digestIn(const QJsonObject& members);

} // namespace pagestack
