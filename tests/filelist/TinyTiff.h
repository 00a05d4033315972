#pragma once

#include "filelist/FileItem.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>
#include <QtEndian>

namespace pagestack {

/// A TIFF file of directories alone, one a page: enough to be counted, not to be decoded.
inline QByteArray tinyTiff(int pages)
{
    constexpr quint32 directorySize = 2 + 12 + 4;
    QByteArray bytes("II*\0", 4);
    const auto put = [&bytes](auto value) {
        value = qToLittleEndian(value);
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    put(quint32 { 8 });
    for (int page = 1; page <= pages; ++page) {
        put(quint16 { 1 });
        put(quint16 { 256 }); // the width: one short of value 1
        put(quint16 { 3 });
        put(quint32 { 1 });
        put(quint32 { 1 });
        put(page == pages ? quint32 { 0 } : static_cast<quint32>(bytes.size()) + 4);
        Q_ASSERT(bytes.size() == 8 + page * qsizetype { directorySize });
    }
    return bytes;
}

/// Writes such a file, with the folders that lead to it; empty for 0 pages.
inline QString makeFile(const QString& path, int pages = 1)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    const QByteArray bytes = pages == 0 ? QByteArray() : tinyTiff(pages);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        QTest::qFail("a test file could not be written", __FILE__, __LINE__);
    return path;
}

inline std::shared_ptr<FileItem> itemOf(const QString& path)
{
    return FileItem::initWithURL(QUrl::fromLocalFile(path));
}

} // namespace pagestack
