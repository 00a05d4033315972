#include "engine/image/png/PixelStream.h"

#include <libdeflate.h>

#include <algorithm>
#include <bit>

namespace pagestack {

namespace {

    // Deflate with a window of 32 KB; made by a fast coder, which is what decoders may know of it.
    constexpr std::array<std::uint8_t, 2> streamHeader = { 0x78, 0x01 };
    constexpr std::size_t checksumBytes = 4;
    // Readers need not hold more of a stream at a time; a chunk of any length would be in order.
    constexpr std::size_t mostChunkBytes = std::size_t { 1024 } * 1024;

    int pixelBytes(const PixelLayout& layout)
    {
        return std::max(1, layout.channels() * layout.bitsPerSample / 8);
    }

    void copySwapped(const std::uint8_t* from, std::size_t bytes, std::uint8_t* to)
    {
        for (std::size_t i = 0; i < bytes; i += 2) {
            to[i] = from[i + 1];
            to[i + 1] = from[i];
        }
    }

} // namespace

PixelStream::PixelStream(const PixelLayout& layout, int widthPx, int heightPx, PngChunks& chunks,
                         std::size_t sectionBytes)
    : m_chunks(chunks)
    , m_swapsBytes(layout.bitsPerSample == 16 && std::endian::native == std::endian::little)
    , m_rowBytes(static_cast<std::size_t>(layout.rowBytes(widthPx)))
    , m_rowsToCome(static_cast<std::size_t>(heightPx))
    , m_sectionRows(std::clamp<std::size_t>(sectionBytes / (1 + m_rowBytes), 1, m_rowsToCome))
    , m_coder(m_rowBytes, pixelBytes(layout),
              layout.model == ColorModel::Palette || layout.bitsPerSample < 8, m_sectionRows)
    , m_raw(std::make_unique_for_overwrite<std::uint8_t[]>((1 + m_sectionRows) * m_rowBytes))
    , m_compressed(std::make_unique_for_overwrite<std::uint8_t[]>(
          streamHeader.size() + SectionCoder::bound(m_sectionRows * (1 + m_rowBytes))
          + checksumBytes))
{
    std::fill_n(m_raw.get(), m_rowBytes, std::uint8_t { 0 });
}

void PixelStream::addRow(const std::uint8_t* row)
{
    std::uint8_t* const to = m_raw.get() + (1 + m_rows) * m_rowBytes;
    if (m_swapsBytes)
        copySwapped(row, m_rowBytes, to);
    else
        std::copy_n(row, m_rowBytes, to);
    ++m_rows;
    --m_rowsToCome;
    if (m_rows == m_sectionRows || m_rowsToCome == 0)
        writeSection();
}

void PixelStream::writeSection()
{
    const SectionRows rows { m_raw.get() + m_rowBytes, m_rows, m_rowBytes };
    const SectionPlan plan = m_coder.choosePlan(rows);
    const std::span<const std::uint8_t> filtered = m_coder.filter(plan.filtering, rows);
    m_checksum = libdeflate_adler32(m_checksum, filtered.data(), filtered.size());
    const bool isLastSection = m_rowsToCome == 0;
    std::uint8_t* end = m_compressed.get();
    if (m_isFirstSection)
        end = std::copy(streamHeader.begin(), streamHeader.end(), end);
    m_isFirstSection = false;
    end += m_coder.compress(plan.coding, filtered, isLastSection, end);
    if (isLastSection) {
        putBigEndian32(m_checksum, end);
        end += checksumBytes;
    }
    writeChunks({ m_compressed.get(), end });
    std::copy_n(rows.row(m_rows - 1), m_rowBytes, m_raw.get());
    m_rows = 0;
}

void PixelStream::writeChunks(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), mostChunkBytes);
        m_chunks.write({ "IDAT" }, bytes.first(count));
        bytes = bytes.subspan(count);
    }
}

} // namespace pagestack
