#pragma once

#include <QByteArray>

namespace pagestack {

/// Renames the file `from` to `to` if nothing has that name; false when something has. Where the
/// file system knows no such step, the two are one after the other. Throws std::runtime_error with
/// the reason. Both in the file system's encoding, in one folder.
bool takeFreeName(const QByteArray& from, const QByteArray& to);

/// Gives each of two files the other's name, in one step. False, with nothing changed, where the
/// file system knows no such step or one of the names leads to nothing. Throws as above.
bool swapNames(const QByteArray& one, const QByteArray& other);

} // namespace pagestack
