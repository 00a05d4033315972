#include "engine/sources/AllowedFileTypes.h"

#include "engine/support/Paths.h"

#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace pagestack {

const QStringList& allowedFileTypes()
{
    static const QStringList types = u"tif,TIF,tiff,TIFF"_s.split(u',');
    return types;
}

bool hasAllowedFileType(const QString& path)
{
    return allowedFileTypes().contains(pathExtension(path));
}

bool hasOddFileType(const QString& path)
{
    return !hasAllowedFileType(path) && allowedFileTypes().contains(pathExtension(path).toLower());
}

bool isSidecar(const QString& path)
{
    if (!lastPathComponent(path).startsWith(u"._") || !QFileInfo(path).isFile())
        return false;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(4) == QByteArray("\x00\x05\x16\x07", 4);
}

} // namespace pagestack
