#include "engine/support/PathName.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace pagestack {

QString pathFromBytes(const QByteArray& bytes)
{
    // Behind the slash, U+FEFF at the start is no byte order mark, which would be left out.
    const QString path = QFile::decodeName('/' + bytes).sliced(1);
    return QFile::encodeName(path) == bytes ? path : QChar::Null + path;
}

QString absolutePath(const QString& path)
{
    QString plain = path;
    while (plain.size() > 1 && plain.endsWith(u'/'))
        plain.chop(1);
    if (!plain.split(u'/').contains(u".."_s))
        return QFileInfo(plain).absoluteFilePath();
    if (plain == u".." || plain.endsWith(u"/.."))
        plain += u"/."_s;
    const qsizetype slash = plain.lastIndexOf(u'/');
    const QString name = plain.mid(slash + 1);
    QString folder = QFileInfo(plain.left(slash)).canonicalFilePath();
    if (folder.isEmpty()) // There is no such folder: whoever goes there is told so.
        return plain.startsWith(u'/') ? plain : QDir::currentPath() + u'/' + plain;
    if (name == u".")
        return folder;
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

} // namespace pagestack
