#pragma once

#include <QByteArray>
#include <QString>

namespace pagestack {

/// The path or name that `bytes` are in the encoding of the file system. Where they are no text,
/// the result is good for messages only: another file could have the name that it shows. isPath()
/// is false then, and nothing takes it for a path, since it begins with a null character.
QString pathFromBytes(const QByteArray& bytes);

inline bool isPath(const QString& path) { return !path.contains(QChar::Null); }

} // namespace pagestack
