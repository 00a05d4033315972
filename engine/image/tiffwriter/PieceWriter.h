#pragma once

#include "engine/image/tiffwriter/LzwEncoder.h"

#include <cstdint>
#include <memory>
#include <span>

struct tiff;

namespace pagestack {

/// Encodes strips and tiles to a handle that has all tags of the page. One thread.
class PieceWriter
{
public:
    /// `to` is borrowed.
    explicit PieceWriter(tiff* to);

    /// Writes strip or tile `number`, whole; what `samples` hold after that is not told. Throws
    /// std::runtime_error.
    void write(std::uint32_t number, std::span<std::uint8_t> samples);

private:
    bool isLzwEncodedHere() const;
    void subtractNeighbours(std::span<std::uint8_t> samples) const;

    tiff* m_to;
    bool m_isTiled;
    std::unique_ptr<LzwEncoder> m_lzw; ///< null: libtiff encodes
};

} // namespace pagestack
