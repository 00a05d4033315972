#pragma once

#include "engine/image/PixelLayout.h"
#include "engine/image/png/PngChunks.h"
#include "engine/image/png/SectionCoder.h"

namespace pagestack {

/// The pixels of a PNG file: rows are gathered into sections of some megabytes, each section is
/// filtered and compressed in the way that suits its pixels, and all of them together are one zlib
/// stream (RFC 1950). One thread at a time.
class PixelStream
{
public:
    static constexpr std::size_t usualSectionBytes = std::size_t { 4 } * 1024 * 1024;

    /// For an image of `heightPx` rows. A section has as many rows as fit into `sectionBytes`, at
    /// least one.
    PixelStream(const PixelLayout& layout, int widthPx, int heightPx, PngChunks& chunks,
                std::size_t sectionBytes = usualSectionBytes);

    /// Takes the next row, in the layout of the constructor. With the last row of the image the
    /// stream is complete. Throws std::runtime_error when the file takes no more.
    void addRow(const std::uint8_t* row);

private:
    void writeSection();
    void writeChunks(std::span<const std::uint8_t> bytes);

    PngChunks& m_chunks;
    bool m_swapsBytes;
    std::size_t m_rowBytes;
    std::size_t m_rowsToCome;
    std::size_t m_sectionRows;
    SectionCoder m_coder;
    std::unique_ptr<std::uint8_t[]> m_raw; ///< the row above the section and those of the section
    std::size_t m_rows = 0; ///< of the section, so far
    std::unique_ptr<std::uint8_t[]> m_compressed;
    std::uint32_t m_checksum = 1; ///< Adler-32 of all filtered rows
    bool m_isFirstSection = true;
};

} // namespace pagestack
