#include "engine/sources/PathList.h"

#include "engine/options/ConversionOptions.h"
#include "engine/options/PageChoice.h"
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

    bool isPageChoice(const QString& text)
    {
        try {
            const PageChoice choice(text);
            return true;
        } catch (const OptionError&) {
            return false;
        }
    }

    struct Entry
    {
        QString path;
        QString pages {};
    };

    /// What a line names besides a path as it stands; maybe nothing.
    Entry entryOf(QString line)
    {
        const QStringList fields = line.split(u'\t');
        const bool isExported = fields.size() >= 8 && fields.size() <= 9
            && fields.at(7).startsWith(u'/') && isPageChoice(fields.value(8));
        if (isExported)
            return { joinedPath(fields.at(7), fields.at(0)), fields.value(8).trimmed() };
        const QString pages = takePageChoice(line);
        return pages.isEmpty() ? Entry() : Entry { line, pages };
    }

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
    const auto isWanted
        = [&](QStringView path) { return extensions.contains(pathExtension(path).toUpper()); };
    for (const QStringView line : text.tokenize(u'\n')) {
        const Entry entry = isWanted(line) ? Entry { line.toString() } : entryOf(line.toString());
        if (!isWanted(entry.path)) {
            if (!line.trimmed().isEmpty())
                ++list.otherLines;
            continue;
        }
        const QUrl url = fileUrl(entry.path, folder);
        const qsizetype before = known.size();
        known.insert(url);
        if (known.size() == before) {
            ++list.duplicates;
            continue;
        }
        list.files.append(url);
        if (!entry.pages.isEmpty())
            list.pageChoices.insert(url, entry.pages);
    }
    return list;
}

QString takePageChoice(QString& line)
{
    const qsizetype tab = line.lastIndexOf(u'\t');
    QString pages = tab < 0 ? QString() : line.sliced(tab + 1).trimmed();
    if (pages.isEmpty() || !isPageChoice(pages))
        return {};
    line.truncate(tab);
    return pages;
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
