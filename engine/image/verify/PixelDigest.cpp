#include "engine/image/verify/PixelDigest.h"

#include "engine/image/pixels/ByteOrder.h"

#include <libdeflate.h>

#include <array>

namespace pagestack {

void PixelHash::add(std::span<const std::uint8_t> bytes)
{
    if (bytes.empty()) // a null pointer would ask for the start values
        return;
    m_digest.crc = libdeflate_crc32(m_digest.crc, bytes.data(), bytes.size());
    m_digest.adler = libdeflate_adler32(m_digest.adler, bytes.data(), bytes.size());
    m_digest.bytes += bytes.size();
}

void PixelHash::addNumber(std::uint64_t number)
{
    std::array<std::uint8_t, 8> bytes {};
    putNumber(bytes, number, false);
    add(bytes);
}

void PixelHash::addRow(const std::uint8_t* row, std::uint64_t bits)
{
    add({ row, bits / 8 });
    if (const std::uint64_t rest = bits % 8; rest != 0) {
        const auto last = static_cast<std::uint8_t>(row[bits / 8] & (0xFF00U >> rest));
        add({ &last, 1 });
    }
}

} // namespace pagestack
