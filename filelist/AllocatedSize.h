#pragma once

#include <QString>

#include <optional>

namespace pagestack {

/// Bytes that the file at `path` occupies on disk, links followed; none when it cannot be looked
/// up.
std::optional<qint64> allocatedSize(const QString& path);

} // namespace pagestack
