#pragma once

#include "engine/image/decode/EncodedBytes.h"
#include "engine/image/decode/StripStream.h"

namespace pagestack {

/// A strip of runs and literals. TIFF 6.0, section 9. Runs may reach over the ends of rows.
class PackBitsStream : public StripStream
{
public:
    explicit PackBitsStream(EncodedBytes bytes);

    void read(std::span<std::uint8_t> to) override;
    std::uint64_t skipRest(std::uint64_t most) override;

private:
    bool nextByte(std::uint8_t& byte);
    bool startRun();
    std::size_t readSome(std::span<std::uint8_t> to);

    EncodedBytes m_bytes;
    std::span<const std::uint8_t> m_chunk;
    std::size_t m_runLeft = 0; ///< decoded bytes
    bool m_isLiteral = false;
    std::uint8_t m_repeated = 0;
};

} // namespace pagestack
