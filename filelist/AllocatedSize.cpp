#include "filelist/AllocatedSize.h"

#include <QFile>

#include <sys/stat.h>

namespace pagestack {

std::optional<qint64> allocatedSize(const QString& path)
{
    struct stat status
    {
    };
    if (::stat(QFile::encodeName(path).constData(), &status) != 0)
        return std::nullopt;
    // Linux and macOS both count in 512 bytes, whatever the block size of the file system is.
    return qint64 { status.st_blocks } * 512;
}

} // namespace pagestack
