#include "engine/image/formats/png/PixelStream.h"

#include "engine/image/formats/png/SectionCoder.h"

#include <QtEndian>

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <utility>

namespace pagestack {

namespace {

    // Deflate with a window of 32 KB; made by a fast coder, which is what decoders may know of it.
    constexpr std::array<std::uint8_t, 2> streamHeader = { 0x78, 0x01 };
    constexpr std::size_t checksumBytes = 4;
    // Readers need not hold more of a stream at a time; a chunk of any length would be in order.
    constexpr std::size_t mostChunkBytes = std::size_t { 1024 } * 1024;

} // namespace

void writePngChunk(StagedFile& file, const char (&type)[5], std::span<const std::uint8_t> bytes)
{
    std::array<std::uint8_t, 8> head {};
    qToBigEndian(static_cast<std::uint32_t>(bytes.size()), head.data());
    std::copy_n(type, 4, head.begin() + 4);
    std::uint32_t crc = libdeflate_crc32(0, head.data() + 4, 4);
    if (!bytes.empty()) // a null pointer would ask for the start value
        crc = libdeflate_crc32(crc, bytes.data(), bytes.size());
    std::array<std::uint8_t, 4> tail {};
    qToBigEndian(crc, tail.data());
    file.write(head);
    file.write(bytes);
    file.write(tail);
}

/// A section on its way to the file.
struct PixelStream::Section
{
    SectionRows filled() const { return { raw.get() + rowBytes, rows, rowBytes }; }

    void compress()
    {
        const SectionPlan plan = coder.choosePlan(filled());
        const std::span<const std::uint8_t> filtered = coder.filter(plan.filter, filled());
        checksum = libdeflate_adler32(1, filtered.data(), filtered.size());
        compressedBytes = coder.compress(plan.coding, filtered, endsStream,
                                         compressed.get() + streamHeader.size());
    }

    std::size_t rowBytes;
    SectionCoder coder;
    std::unique_ptr<std::uint8_t[]> raw; ///< the row above the section and those of the section
    std::unique_ptr<std::uint8_t[]> compressed; ///< with room for the stream's header and checksum
    std::size_t rows = 0; ///< of the section, so far
    bool endsStream = false;
    std::size_t compressedBytes = 0; ///< behind the room for the header
    std::uint32_t checksum = 1; ///< Adler-32 of the filtered rows
    std::future<void> done {};
};

PixelStream::PixelStream(const PixelLayout& layout, int widthPx, int heightPx, StagedFile& file,
                         SpareThreads* threads, std::size_t sectionBytes)
    : m_file(file)
    , m_is16Bit(layout.bitsPerSample == 16)
    , m_isPacked(layout.model == ColorModel::Palette || layout.bitsPerSample < 8)
    , m_pixelBytes(std::max(1, layout.channels() * layout.bitsPerSample / 8))
    , m_rowBytes(static_cast<std::size_t>(layout.rowBytes(widthPx)))
    , m_rowsToCome(static_cast<std::size_t>(heightPx))
    , m_sectionRows(std::clamp<std::size_t>(sectionBytes / (1 + m_rowBytes), 1, m_rowsToCome))
    , m_section(makeSection())
    , m_pipeline(threads)
{
    std::fill_n(m_section->raw.get(), m_rowBytes, std::uint8_t { 0 });
}

PixelStream::~PixelStream() = default;

std::unique_ptr<PixelStream::Section> PixelStream::makeSection() const
{
    const std::size_t rawBytes = (1 + m_sectionRows) * m_rowBytes;
    const std::size_t mostBytes = streamHeader.size()
        + SectionCoder::bound(m_sectionRows * (1 + m_rowBytes)) + checksumBytes;
    // An aggregate: std::make_unique would need a constructor with Clang 14.
    return std::unique_ptr<Section>( // NOLINT(modernize-make-unique)
        new Section { m_rowBytes,
                      { m_rowBytes, m_pixelBytes, m_isPacked, m_sectionRows },
                      std::make_unique_for_overwrite<std::uint8_t[]>(rawBytes),
                      std::make_unique_for_overwrite<std::uint8_t[]>(mostBytes) });
}

void PixelStream::addRow(const std::uint8_t* row)
{
    std::uint8_t* const to = m_section->raw.get() + (1 + m_section->rows) * m_rowBytes;
    if (m_is16Bit)
        qToBigEndian<quint16>(row, static_cast<qsizetype>(m_rowBytes / 2), to);
    else
        std::memcpy(to, row, m_rowBytes);
    ++m_section->rows;
    --m_rowsToCome;
    if (m_section->rows == m_sectionRows || m_rowsToCome == 0)
        endSection();
}

void PixelStream::endSection()
{
    Section& ended = *m_section;
    ended.endsStream = m_rowsToCome == 0;
    const std::uint8_t* const lastRow = ended.raw.get() + ended.rows * m_rowBytes;
    ended.done = m_pipeline.add([&ended] { ended.compress(); }, ended.endsStream);
    m_inWork.push_back(std::move(m_section));
    while (!m_inWork.empty() && isFirstDone(m_rowsToCome == 0)) {
        m_unused.push_back(std::move(m_inWork.front()));
        m_inWork.pop_front();
        writeSection(*m_unused.back());
    }
    if (m_rowsToCome == 0)
        return;
    if (m_unused.empty())
        m_unused.push_back(makeSection());
    m_section = std::move(m_unused.back()); // maybe the one that ended
    m_unused.pop_back();
    m_section->rows = 0;
    std::memcpy(m_section->raw.get(), lastRow, m_rowBytes);
}

/// Whether the first section is compressed. One that `isUrgent` is waited for; others can lie ready
/// for the helpers.
bool PixelStream::isFirstDone(bool isUrgent)
{
    const std::future<void>& done = m_inWork.front()->done;
    while (done.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        // Besides those in work one lies ready for the helper that is done first.
        const std::size_t helpers = m_pipeline.helpers();
        if (!isUrgent && m_inWork.size() <= (helpers == 0 ? 0 : helpers + 1))
            return false;
        if (!m_pipeline.runNext())
            done.wait();
    }
    return true;
}

/// Throws what its compression threw.
void PixelStream::writeSection(Section& section)
{
    section.done.get();
    std::uint8_t* start = section.compressed.get() + streamHeader.size();
    std::uint8_t* end = start + section.compressedBytes;
    m_checksum = static_cast<std::uint32_t>(adler32_combine(
        m_checksum, section.checksum, static_cast<z_off_t>(section.filled().filteredBytes())));
    if (std::exchange(m_isFirstSection, false)) {
        start = section.compressed.get();
        std::copy(streamHeader.begin(), streamHeader.end(), start);
    }
    if (section.endsStream) {
        qToBigEndian(m_checksum, end);
        end += checksumBytes;
    }
    for (std::span<const std::uint8_t> bytes(start, end); !bytes.empty();) {
        const std::size_t count = std::min(bytes.size(), mostChunkBytes);
        writePngChunk(m_file, "IDAT", bytes.first(count));
        bytes = bytes.subspan(count);
    }
}

} // namespace pagestack
