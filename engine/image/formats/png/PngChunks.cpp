#include "engine/image/formats/png/PngChunks.h"

#include <QtEndian>

#include <libdeflate.h>

#include <algorithm>

namespace pagestack {

namespace {

    constexpr std::array<std::uint8_t, 8> signature
        = { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n' };

} // namespace

PngChunks::PngChunks(StagedFile& file)
    : m_file(file)
{
    m_file.write(signature);
}

void PngChunks::write(const Type& type, std::span<const std::uint8_t> bytes)
{
    std::array<std::uint8_t, 8> head {};
    qToBigEndian(static_cast<std::uint32_t>(bytes.size()), head.data());
    std::copy_n(type.begin(), 4, head.begin() + 4);
    std::uint32_t crc = libdeflate_crc32(0, head.data() + 4, 4);
    if (!bytes.empty()) // a null pointer would ask for the start value
        crc = libdeflate_crc32(crc, bytes.data(), bytes.size());
    std::array<std::uint8_t, 4> tail {};
    qToBigEndian(crc, tail.data());
    m_file.write(head);
    m_file.write(bytes);
    m_file.write(tail);
}

} // namespace pagestack
