#include "filelist/AllowedFileTypes.h"

using namespace Qt::StringLiterals;

namespace pagestack {

const QStringList& allowedFileTypes()
{
    static const QStringList types = u"tif,TIF,tiff,TIFF"_s.split(u',');
    return types;
}

bool isAllowedFileType(QStringView extension) { return allowedFileTypes().contains(extension); }

} // namespace pagestack
