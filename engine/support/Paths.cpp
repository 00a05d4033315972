#include "engine/support/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Place of the dot before the extension of `name`; -1 when there is none.
    qsizetype extensionDot(QStringView name)
    {
        const qsizetype dot = name.lastIndexOf(u'.');
        return dot > 0 ? dot : -1;
    }

    QStringView lastPart(QStringView path)
    {
        const QStringView trimmed = withoutEndingSlash(path);
        return trimmed == u"/" ? trimmed : trimmed.sliced(trimmed.lastIndexOf(u'/') + 1);
    }

} // namespace

QString pathFromBytes(const QByteArray& bytes)
{
    // Behind the slash, U+FEFF at the start is no byte order mark, which would be left out.
    const QString path = QFile::decodeName('/' + bytes).sliced(1);
    return QFile::encodeName(path) == bytes ? path : QChar::Null + path;
}

QString absolutePath(const QString& path)
{
    QString whole
        = withoutEndingSlash(path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path)
              .toString();
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

QStringView withoutEndingSlash(QStringView path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

QString lastPathComponent(QStringView path) { return lastPart(path).toString(); }

QString folderPart(QStringView path)
{
    const QStringView trimmed = withoutEndingSlash(path);
    const qsizetype slash = trimmed.lastIndexOf(u'/');
    return slash < 0 ? u""_s : withoutEndingSlash(trimmed.first(slash + 1)).toString();
}

QString joinedPath(const QString& folder, const QString& name)
{
    if (folder.isEmpty())
        return name;
    QString path;
    path.reserve(folder.size() + 1 + name.size());
    path += folder;
    if (!folder.endsWith(u'/'))
        path += u'/';
    return path += name;
}

QString commonFolder(const QString& a, const QString& b)
{
    QString common = a;
    while (common != b && !b.startsWith(joinedPath(common, u""_s)) && common != u"/")
        common = folderPart(common);
    return common;
}

QString pathBelow(const QString& path, const QString& folder)
{
    const QString start = joinedPath(folder, u""_s);
    return path.startsWith(start) ? path.sliced(start.size()) : QString();
}

QString pathExtension(QStringView path)
{
    const QStringView name = lastPart(path);
    const qsizetype dot = extensionDot(name);
    return dot < 0 ? u""_s : name.sliced(dot + 1).toString();
}

QString baseName(QStringView path)
{
    const QStringView name = lastPart(path);
    const qsizetype dot = extensionDot(name);
    return name.first(dot < 0 ? name.size() : dot).toString();
}

} // namespace pagestack
