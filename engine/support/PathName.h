#pragma once

#include <QByteArray>
#include <QString>

namespace pagestack {

/// The path or name that `bytes` are in the encoding of the file system. Where they are no text,
/// the result is good for messages only: another file could have the name that it shows. isPath()
/// is false then, and nothing takes it for a path, since it begins with a null character.
QString pathFromBytes(const QByteArray& bytes);

/// `path` from the root on, without ".", ".." and a slash at its end, and so that it leads where
/// `path` does: ".." behind a symbolic link leads out of the folder that the link leads to. A path
/// through what is no folder keeps its "..". Looks at the disk where there are such.
QString absolutePath(const QString& path);

inline bool isPath(const QString& path) { return !path.contains(QChar::Null); }

} // namespace pagestack
