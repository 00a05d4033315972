#pragma once

#include <QByteArray>

namespace pagestack {

/// Renames the file `from` to `to` if nothing has that name. Where the file system knows no such
/// step, the two are one after the other, and `from` may stay as a second name. Returns 0 or the
/// number of the error, EEXIST when something has the name.
int renameToFreeName(const QByteArray& from, const QByteArray& to);

/// Gives each of two files the other's name, in one step. Returns 0 or the number of the error.
int exchangeNames(const QByteArray& one, const QByteArray& other);

/// Whether an error says that the file system has no such call.
bool isUnknownCall(int error);

} // namespace pagestack
