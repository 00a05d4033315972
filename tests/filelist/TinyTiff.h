#pragma once

#include "filelist/FileList.h"
#include "tests/support/TiffBuilder.h"

#include <QDir>

namespace pagestack {

/// Writes a TIFF file of directories alone, one a page, with the folders that lead to it: it can be
/// counted, not decoded. An empty file for 0 pages.
inline QString makeFile(const QString& path, int pages = 1)
{
    QDir().mkpath(QFileInfo(path).path());
    putBytes(path, pages == 0 ? "" : rawTiff({}, { { 256, 1 } }, oneAfterTheOther(pages)));
    return path;
}

inline QStringList namesOf(const FileList& files)
{
    QStringList names;
    for (const auto& item : files.items())
        names.append(item->name());
    return names;
}

inline std::shared_ptr<FileItem> itemOf(const QString& path)
{
    return FileItem::initWithURL(QUrl::fromLocalFile(path));
}

} // namespace pagestack
