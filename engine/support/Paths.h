#pragma once

#include <QByteArray>
#include <QString>

namespace pagestack {

/// The path or name of these bytes in the encoding of the file system. Bytes that are not text give
/// a result for messages only: it begins with a null character, so that isPath() is false and no
/// file can be opened by it.
QString pathFromBytes(const QByteArray& bytes);

inline bool isPath(const QString& path) { return !path.contains(QChar::Null); }

/// `path` from the root on, without ".", ".." and a slash at its end; it leads to the same file. A
/// ".." behind a symbolic link leaves the folder that the link leads to. Looks at the disk only
/// where there is a "..", which stays if the path before it is not a folder.
QString absolutePath(const QString& path);

/// `path` without slashes at its end; the root stays "/".
QStringView withoutEndingSlash(QStringView path);

/// "scan.tif" of "/in/scan.tif" and of "/in/scan.tif/"; the root stays "/".
QString lastPathComponent(QStringView path);

/// `path` without its last component: "/in" of "/in/scan.tif", "/" of "/scan.tif", empty for a
/// bare name.
QString folderPart(QStringView path);

/// `name` inside `folder`; `name` alone when `folder` is empty.
QString joinedPath(const QString& folder, const QString& name);

/// The deepest folder that is both of `a` and `b` or above them; both come from absolutePath().
QString commonFolder(const QString& a, const QString& b);

/// "box/1" for "/in/box/1" below "/in"; empty when `path` is `folder` or not below it. Both come
/// from absolutePath().
QString pathBelow(const QString& path, const QString& folder);

/// "tif" of "/in/scan.tif", as it is written; empty when there is none. A name whose only dot is
/// the first character is a hidden file without an extension.
QString pathExtension(QStringView path);

/// The last component of `path` without its extension and the dot.
QString baseName(QStringView path);

} // namespace pagestack
