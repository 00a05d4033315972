#pragma once

#include "engine/files/FileState.h"

#include <QString>

namespace pagestack {

/// A path in `folder` for a file called `name` at which nothing is, with a number behind the name
/// where there is need: "a-2.tif", and less of the name where that is too long. With `hasNote`,
/// nothing is at its notePath() either. Throws std::runtime_error.
QString freePath(const QString& folder, const QString& name, bool hasNote);

/// Of the file of reasons beside the file at `path`.
QString notePath(const QString& path);

/// Whether it is the same file with the same content; a move changes the time at which it was
/// described.
bool isSameFile(const FileState& a, const FileState& b);

enum class MoveEnd {
    Moved,
    NameTaken, ///< something is at the new name, which is never replaced
    OtherFile, ///< another file had come to the old name; it is there, or has a number behind it
};

/// Moves the file at `from`, which was seen in `state`, to `to`, on another file system by a copy
/// that is compared with it before it gets its name. Throws std::runtime_error; the file is then
/// still at `from` or set aside, and may be at `to` as well.
MoveEnd moveFile(const QString& from, const QString& to, const FileState& state);

/// Removes the file at `path`, which is elsewhere as well, by way of a hidden name: a file that has
/// come in its place at the last moment comes back. Throws std::runtime_error.
void removeMoved(const QString& path, const FileState& state);

/// Ends a removeMoved() of a program that was ended: of the file that was moved from `path` to
/// `to`.
void settleAside(const QString& path, const QString& to, const FileState& state);

/// Whether the same bytes are at both.
bool areSameFiles(const QString& a, const QString& b);

} // namespace pagestack
