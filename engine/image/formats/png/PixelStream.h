#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/formats/png/SectionPipeline.h"
#include "engine/image/pixels/PixelLayout.h"

#include <deque>
#include <memory>
#include <span>

namespace pagestack {

/// Appends a chunk of a PNG file (ISO/IEC 15948, clause 5), of at most 2^31 - 1 bytes. `type` has
/// four letters. Throws std::runtime_error when the file takes no more.
void writePngChunk(StagedFile& file, const char (&type)[5], std::span<const std::uint8_t> bytes);

/// The pixels of a PNG file: one zlib stream (RFC 1950) of sections of some megabytes, each
/// filtered and compressed in the way that suits its pixels. One thread at a time.
class PixelStream
{
public:
    static constexpr std::size_t usualSectionBytes = std::size_t { 4 } * 1024 * 1024;

    /// A section has as many rows as fit into `sectionBytes`, at least one. `threads`, which may be
    /// null, can help with the sections and change no byte of the stream.
    PixelStream(const PixelLayout& layout, int widthPx, int heightPx, StagedFile& file,
                SpareThreads* threads = nullptr, std::size_t sectionBytes = usualSectionBytes);
    ~PixelStream();
    PixelStream(const PixelStream&) = delete;
    PixelStream& operator=(const PixelStream&) = delete;

    /// Adds the next row; the last one completes the stream. Throws std::runtime_error when the
    /// file takes no more.
    void addRow(const std::uint8_t* row);

private:
    struct Section;

    std::unique_ptr<Section> makeSection() const;
    void endSection();
    bool isFirstDone(bool isUrgent);
    void writeSection(Section& section);

    StagedFile& m_file;
    bool m_is16Bit;
    bool m_isPacked;
    int m_pixelBytes;
    std::size_t m_rowBytes;
    std::size_t m_rowsToCome;
    std::size_t m_sectionRows;
    std::unique_ptr<Section> m_section; ///< being filled; null when the image is complete
    std::deque<std::unique_ptr<Section>> m_inWork; ///< in the order of the stream
    std::vector<std::unique_ptr<Section>> m_unused;
    std::uint32_t m_checksum = 1; ///< Adler-32 of all filtered rows
    bool m_isFirstSection = true;
    SectionPipeline m_pipeline; ///< last: its threads use what they were given
};

} // namespace pagestack
