#pragma once

#include "engine/files/ByteSpool.h"

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace pagestack {

/// Lines of text in a temporary file, written one after the other and then read. One thread. Throws
/// std::runtime_error when the file cannot be written or read.
class LineSpool
{
public:
    /// Appends `line`, which ends in a line end. Gives its offset.
    std::uint64_t append(const QByteArray& line);

    /// The line at `offset`, its end included; none behind the last one.
    std::optional<QByteArray> lineAt(std::uint64_t offset);

private:
    void flush();

    ByteSpool m_bytes;
    QByteArray m_waiting; ///< what is not in `m_bytes` yet
    QByteArray m_loaded; ///< a part of `m_bytes`
    std::uint64_t m_loadedAt = 0;
};

} // namespace pagestack
