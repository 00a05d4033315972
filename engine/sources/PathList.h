#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringView>
#include <QUrl>

#include <atomic>

namespace pagestack {

/// The files that a text names, one path a line.
struct PathList
{
    QList<QUrl> files; ///< local, absolute, each once, in the order of their first lines
    QHash<QUrl, QString> pageChoices; ///< of those that have one, as FileItem takes it
    qsizetype duplicates = 0; ///< lines that name a file once more
    qsizetype otherLines = 0; ///< lines, blank ones aside, that do not name a file wanted
};

/// Reads `text`, whose lines end in "\n" and nothing else. A line is taken as it stands, as a path,
/// when its extension in upper case is one of `allowedTypes`, which "," parts; a relative path
/// starts from the current folder. Other lines count when they name such a path and behind it,
/// after a tab, pages as PageChoice reads them, or when they are of an exported list. Does not look
/// at the disk. Time grows with the text, not with its square. Any thread.
PathList parsePathList(QStringView text, const QString& allowedTypes);

/// The choice of pages behind the last tab of `line`; empty when there is none. `line` loses both.
QString takePageChoice(QString& line);

/// The text of the file at `path`, UTF-8 with or without a byte order mark. Throws
/// std::runtime_error with the reason when it cannot be read, is no regular file, has invalid
/// bytes or more than 256 MB. Any thread.
QString readPathList(const QString& path);

/// How many of `files` do not exist. Looks at the disk, which may take its time; ends early, with
/// the number so far, once `isOutdated` is true. Any thread.
qsizetype countMissing(const QList<QUrl>& files, const std::atomic<bool>& isOutdated);

} // namespace pagestack
