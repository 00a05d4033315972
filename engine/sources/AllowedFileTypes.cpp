#include "engine/sources/AllowedFileTypes.h"

#include "engine/support/Paths.h"

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

} // namespace pagestack
