#include "engine/image/formats/png/PixelStream.h"

#include <libdeflate.h>

#include <algorithm>
#include <bit>

namespace pagestack {

namespace {

    // Deflate with a window of 32 KB; made by a fast coder, which is what decoders may know of it.
    constexpr std::array<std::uint8_t, 2> streamHeader = { 0x78, 0x01 };
    constexpr std::size_t checksumBytes = 4;
    constexpr std::size_t frameBytes = std::max(streamHeader.size(), checksumBytes);
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

    /// The Adler-32 of bytes whose first ones have `first` and whose last ones, `secondBytes` of
    /// them, have `second` (RFC 1950, chapter 8): each of the last ones counts the sum before it
    /// once.
    std::uint32_t joinedChecksum(std::uint32_t first, std::uint32_t second, std::size_t secondBytes)
    {
        constexpr std::uint64_t base = 65521;
        const std::uint64_t sumBefore = (first % 65536 + base - 1) % base; // sums start at 1
        const std::uint64_t sum = (sumBefore + second % 65536) % base;
        const std::uint64_t sums
            = (secondBytes % base * sumBefore + first / 65536 + second / 65536) % base;
        return static_cast<std::uint32_t>(sums * 65536 + sum);
    }

} // namespace

PixelStream::PixelStream(const PixelLayout& layout, int widthPx, int heightPx, PngChunks& chunks,
                         SpareThreads* threads, std::size_t sectionBytes)
    : m_chunks(chunks)
    , m_swapsBytes(layout.bitsPerSample == 16 && std::endian::native == std::endian::little)
    , m_rowBytes(static_cast<std::size_t>(layout.rowBytes(widthPx)))
    , m_rowsToCome(static_cast<std::size_t>(heightPx))
    , m_sectionRows(std::clamp<std::size_t>(sectionBytes / (1 + m_rowBytes), 1, m_rowsToCome))
    , m_section(std::make_unique<Section>(m_rowBytes, m_sectionRows, frameBytes))
    , m_line(
          [=, bytesOfRow = m_rowBytes, mostRows = m_sectionRows, bytes = pixelBytes(layout),
           isPacked = layout.model == ColorModel::Palette || layout.bitsPerSample < 8] {
              return std::make_unique<SectionCoder>(bytesOfRow, bytes, isPacked, mostRows);
          },
          threads)
{
    std::fill_n(m_section->raw.get(), m_rowBytes, std::uint8_t { 0 });
}

void PixelStream::addRow(const std::uint8_t* row)
{
    std::uint8_t* const to = m_section->raw.get() + (1 + m_section->rows) * m_rowBytes;
    if (m_swapsBytes)
        copySwapped(row, m_rowBytes, to);
    else
        std::copy_n(row, m_rowBytes, to);
    ++m_section->rows;
    --m_rowsToCome;
    if (m_section->rows == m_sectionRows || m_rowsToCome == 0)
        endSection();
}

void PixelStream::endSection()
{
    const bool isLastSection = m_rowsToCome == 0;
    m_section->endsStream = isLastSection;
    const SectionRows ended = m_section->filled();
    const std::vector<std::uint8_t> lastRow(ended.row(ended.count - 1), ended.row(ended.count));
    m_line.add(std::move(m_section));
    while (std::unique_ptr<Section> section = m_line.take(isLastSection)) {
        writeSection(*section);
        m_unused.push_back(std::move(section));
    }
    if (isLastSection)
        return;
    if (m_unused.empty()) {
        m_section = std::make_unique<Section>(m_rowBytes, m_sectionRows, frameBytes);
    } else {
        m_section = std::move(m_unused.back());
        m_unused.pop_back();
        m_section->reset();
    }
    std::copy(lastRow.begin(), lastRow.end(), m_section->raw.get());
}

void PixelStream::writeSection(Section& section)
{
    std::uint8_t* start = section.compressed.get() + frameBytes;
    std::uint8_t* end = start + section.compressedBytes;
    m_checksum = joinedChecksum(m_checksum, section.checksum, section.filled().filteredBytes());
    if (m_isFirstSection) {
        start -= streamHeader.size();
        std::copy(streamHeader.begin(), streamHeader.end(), start);
    }
    m_isFirstSection = false;
    if (section.endsStream) {
        putBigEndian32(m_checksum, end);
        end += checksumBytes;
    }
    writeChunks({ start, end });
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
