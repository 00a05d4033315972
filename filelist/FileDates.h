#pragma once

#include <QDateTime>
#include <QString>

namespace pagestack {

/// Dates of a file, in UTC, to the millisecond. Invalid are those that cannot be read.
struct FileDates
{
    QDateTime modified;
    QDateTime created; ///< invalid also where the file system keeps none
    QDateTime accessed;

    friend bool operator==(const FileDates&, const FileDates&) = default;
};

/// The dates of the file at `path`, links followed, by one look at it. Any thread.
FileDates fileDates(const QString& path);

} // namespace pagestack
