#pragma once

#include "engine/files/StagedFile.h"

#include <array>

namespace pagestack {

/// The frame of a PNG file (ISO/IEC 15948, clause 5): its signature, which the constructor appends,
/// and its chunks. Throws std::runtime_error when the file takes no more.
class PngChunks
{
public:
    using Type = std::array<char, 5>; ///< such as "IHDR"

    explicit PngChunks(StagedFile& file);

    /// Appends a chunk, of at most 2^31 - 1 bytes.
    void write(const Type& type, std::span<const std::uint8_t> bytes);

private:
    StagedFile& m_file;
};

} // namespace pagestack
