#include "filelist/FileDates.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace pagestack {

namespace {

    QDateTime dateOf(const struct statx_timestamp& time)
    {
        return QDateTime::fromMSecsSinceEpoch(time.tv_sec * 1000 + time.tv_nsec / 1000000, Qt::UTC);
    }

} // namespace

// QFileInfo would work out the local time of each date, which takes longer than reading it.
FileDates fileDates(const QString& path)
{
    FileDates dates;
    struct statx status = {};
    if (::statx(AT_FDCWD, QFile::encodeName(path).constData(), AT_STATX_SYNC_AS_STAT,
                STATX_MTIME | STATX_ATIME | STATX_BTIME, &status)
        != 0)
        return dates;
    dates.modified = dateOf(status.stx_mtime);
    dates.accessed = dateOf(status.stx_atime);
    if ((status.stx_mask & STATX_BTIME) != 0)
        dates.created = dateOf(status.stx_btime);
    return dates;
}

} // namespace pagestack
