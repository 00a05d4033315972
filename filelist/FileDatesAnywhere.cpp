#include "filelist/FileDates.h"

#include <QFileInfo>

namespace pagestack {

FileDates fileDates(const QString& path)
{
    const QFileInfo file(path);
    return { file.lastModified().toUTC(), file.birthTime().toUTC(), file.lastRead().toUTC() };
}

} // namespace pagestack
