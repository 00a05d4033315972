#pragma once

#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/threads/RunLater.h"

#include <cstdint>
#include <memory>

namespace pagestack {

class StagedFile;

/// Brings encoded pieces into the room that a staged file has for them, by other threads, beside
/// who makes the file go on. Those on their way are few. One thread.
class PieceCarrier
{
public:
    /// Without `later` there are no other threads, and nothing is taken.
    explicit PieceCarrier(RunLater later);

    /// Waits for what is in work; the rest is left undone.
    ~PieceCarrier();
    PieceCarrier(const PieceCarrier&) = delete;
    PieceCarrier& operator=(const PieceCarrier&) = delete;

    /// Whether these are to be added: it is worth the way, and there is room in `file` for all that
    /// is on it. Where that is scarce, who writes them at once needs it no longer twice: then
    /// returns as `finish`, and throws as that does.
    bool takes(const EncodedPieces& pieces, const StagedFile& file);

    /// Has the pieces written, one behind the other, into the room of `file` from `begin` on, which
    /// is not cut until `finish` has returned.
    void add(const EncodedPieces& pieces, const StagedFile& file, std::uint64_t begin);

    /// Does once more what has failed, for which there may be room now. Throws std::runtime_error
    /// when it fails again; another call may follow.
    void retry();

    /// Returns when all is written. Throws in the same way.
    void finish();

private:
    struct Load;
    struct Road;

    bool hasRoom(std::uint64_t bytes, const StagedFile& file) const;
    void awaitAtMost(std::size_t loads);

    const RunLater m_later;
    const std::shared_ptr<Road> m_road; ///< shared with works that come late
};

} // namespace pagestack
