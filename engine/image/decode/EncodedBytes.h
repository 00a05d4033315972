#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace pagestack {

class OpenTiffFile;

/// The encoded bytes of a strip or tile, from the first to the last, in chunks. One thread.
class EncodedBytes
{
public:
    /// The `size` bytes of `file` from `offset` on; what of them lies beyond the end of the file is
    /// left out. `isReversed`: every byte has its lowest bit first (FillOrder 2). `file` is
    /// borrowed.
    EncodedBytes(const OpenTiffFile& file, std::uint64_t offset, std::uint64_t size,
                 bool isReversed);

    /// Bytes that `next` has not given yet.
    std::uint64_t left() const { return m_left; }

    /// The next bytes, at most 64 KiB unless `most` says otherwise; empty after the last. Valid
    /// until the next call. Throws std::runtime_error when they cannot be read.
    std::span<const std::uint8_t> next(std::uint64_t most = std::uint64_t { 64 } * 1024);

private:
    const OpenTiffFile& m_file;
    std::uint64_t m_offset;
    std::uint64_t m_left;
    bool m_isReversed;
    std::vector<std::uint8_t> m_chunk;
};

} // namespace pagestack
