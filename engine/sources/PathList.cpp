#include "engine/sources/PathList.h"

#include "engine/support/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QStringList>

#include <stdexcept>
#include <string>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qint64 largestListBytes = qint64 { 256 } * 1024 * 1024;

    /// Without "." and doubled slashes, by which one file would have two URLs; after two slashes at
    /// the start QUrl would look for the name of a host. ".." stays: it may be behind a link.
    QUrl fileUrl(QStringView line, const QString& folder)
    {
        QString path = line.startsWith(u'/') ? QString() : folder;
        for (const QStringView part : line.tokenize(u'/', Qt::SkipEmptyParts))
            if (part != u".")
                (path += u'/') += part;
        return QUrl::fromLocalFile(line.endsWith(u'/') ? path + u'/' : path);
    }

} // namespace

PathList parsePathList(QStringView text, const QString& allowedTypes)
{
    const QStringList extensions = allowedTypes.split(u',', Qt::SkipEmptyParts);
    const QString folder = QDir::currentPath();
    PathList list;
    QSet<QUrl> known;
    for (const QStringView line : text.tokenize(u'\n')) {
        if (!extensions.contains(pathExtension(line).toUpper())) {
            if (!line.trimmed().isEmpty())
                ++list.otherLines;
            continue;
        }
        const QUrl url = fileUrl(line, folder);
        const qsizetype before = known.size();
        known.insert(url);
        if (known.size() > before)
            list.files.append(url);
        else
            ++list.duplicates;
    }
    return list;
}

QString readPathList(const QString& path)
{
    // A pipe or a device might never come to its end.
    if (!QFileInfo(path).isFile())
        throw std::runtime_error("no regular file is there");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error(file.errorString().toStdString());
    if (file.size() > largestListBytes)
        throw std::runtime_error(std::to_string(file.size()) + " bytes are too many for a list");
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw std::runtime_error(file.errorString().toStdString());
    if (!bytes.isValidUtf8())
        throw std::runtime_error("the text is not UTF-8");
    return QString::fromUtf8(bytes); // leaves a byte order mark out
}

qsizetype countMissing(const QList<QUrl>& files, const std::atomic<bool>& isOutdated)
{
    qsizetype missing = 0;
    for (const QUrl& file : files) {
        if (isOutdated)
            break;
        if (!QFileInfo::exists(file.toLocalFile()))
            ++missing;
    }
    return missing;
}

} // namespace pagestack
