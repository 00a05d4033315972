#pragma once

#include <QByteArray>

namespace pagestack {

/// Gives the open file the access control list (POSIX ACL) of the file at `path`, or none when that
/// has none, whatever the folder makes new files inherit. False when it cannot. Systems other than
/// Linux: does nothing.
bool keepAccessList(const QByteArray& path, int fileDescriptor);

} // namespace pagestack
