#pragma once

#include <QDateTime>
#include <QString>

namespace pagestack {

/// Dates of a file, in UTC, to the millisecond. A date that cannot be read is invalid.
struct FileDates
{
    QDateTime modified;
    QDateTime created; ///< invalid also where the file system keeps none
    QDateTime accessed;

    friend bool operator==(const FileDates&, const FileDates&) = default;
};

/// Reads the dates of the file at `path`, links followed, in one system call. Any thread.
FileDates fileDates(const QString& path);

} // namespace pagestack
