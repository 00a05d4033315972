#pragma once

#include "engine/preview/PreviewFile.h"

#include <QMutex>

#include <cstdint>
#include <mutex>

namespace pagestack {

/// The room in memory for reading pages that are only looked at: of those with bands of many
/// megabytes one is read at a time. Lives as long as the page is read; one a thread.
class BandRoom
{
public:
    /// Of all bands that are held side by side.
    static constexpr std::uint64_t mostBytes = std::uint64_t { 64 } * 1024 * 1024;

    /// Waits until there is room for bands of `bytes`; throws std::runtime_error when `isStopped`.
    BandRoom(std::uint64_t bytes, const IsStopped& isStopped);

private:
    std::unique_lock<QMutex> m_turn; ///< holds nothing for small bands
};

} // namespace pagestack
