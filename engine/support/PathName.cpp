#include "engine/support/PathName.h"

#include <QFile>

namespace pagestack {

QString pathFromBytes(const QByteArray& bytes)
{
    // Behind the slash, U+FEFF at the start is no byte order mark, which would be left out.
    const QString path = QFile::decodeName('/' + bytes).sliced(1);
    return QFile::encodeName(path) == bytes ? path : QChar::Null + path;
}

} // namespace pagestack
