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
    QString whole = path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path;
    while (whole.size() > 1 && whole.endsWith(u'/'))
        whole.chop(1);
    QString plain;
    for (const QStringView part : QStringView(whole).tokenize(u'/', Qt::SkipEmptyParts)) {
        if (part == u".")
            continue;
        if (part != u"..") {
            (plain += u'/') += part;
            continue;
        }
        const QFileInfo folder(plain);
        if (!plain.isEmpty() && !folder.isDir()) // Whoever goes there is told so.
            return whole;
        if (folder.isSymbolicLink())
            plain = folder.canonicalFilePath();
        plain.truncate(plain.lastIndexOf(u'/'));
    }
    return plain.isEmpty() ? u"/"_s : plain;
}

} // namespace pagestack
