#pragma once

#include "engine/image/tiffwriter/TiffFileBuilder.h"

namespace pagestack {

/// A TIFF file that is made of pages, one after the other, and put in place at the end.
///
/// Pages keep what they are: bit depth, photometric interpretation, planes, tiles, orientation,
/// resolution, profile, document tags. Strips and tiles that have the wanted compression already
/// are copied as they lie. A fax compression asked of a page that is not one bit deep writes that
/// page with no compression. The file is little-endian, becomes a BigTIFF file when its pages could
/// pass 4 GB, and is the same, byte for byte, on every run. One thread at a time.
class MultiPageTiffWriter
{
public:
    /// Beyond this size a file cannot be a classic TIFF file.
    static constexpr std::uint64_t classicLimitBytes = 0xFFF00000;

    /// A file for `path` with the compression of `compressionIndex`
    /// (Settings::tiffCompressionIndex) and probably `plannedPages` pages. Nothing is made before
    /// the first page comes. `limitBytes` is for tests.
    MultiPageTiffWriter(QString path, int compressionIndex, int plannedPages,
                        std::uint64_t limitBytes = classicLimitBytes);

    /// Encodes the page into the staged file. Throws std::runtime_error with the reason when the
    /// page cannot be decoded completely; the staged file is then as it was before. A target that
    /// takes no more (full disk, no permission) is no error here: it is kept for `commit`, and this
    /// page and later ones only count as gathered.
    /// `pieces`, from `encodePieces` with the same compression, take the place of encoding it.
    void append(const std::shared_ptr<const PageSource>& page, const EncodedPieces& pieces = {});

    /// Takes `file`, from `encodedPage` for the same path and compression, as that of `page`, the
    /// only one.
    void appendEncoded(const std::shared_ptr<const PageSource>& page,
                       std::unique_ptr<StagedFile> file);

    /// Appends the page once more that was appended last, when that is why there is a
    /// `failureReason`; by now there may be room for it. Throws as `append`.
    void appendAgain(const std::shared_ptr<const PageSource>& page);

    int pageCount() const { return static_cast<int>(m_pages.size()); } ///< gathered so far

    /// The complete file, to be put in place; ends the gathering. Throws std::runtime_error with
    /// the reason when nothing was gathered or the file could not be written.
    std::unique_ptr<StagedFile> finish();

    /// Puts the file in place. False when nothing was gathered or the file could not be written;
    /// what was at the path is then as it was, and it may be tried again.
    /// `expected` as for StagedFile::commit.
    bool commit(StagedFile::Existing existing = StagedFile::Existing::Replaced,
                const std::optional<FileState>& expected = std::nullopt);

    /// Why `commit` returned, or will return, false; empty after a success.
    QString failureReason() const { return m_failureReason; }

private:
    void write(const PageSource& page, const EncodedPieces& pieces);
    void begin(bool bigTiff);
    void gather(const std::shared_ptr<const PageSource>& page);
    bool couldPassLimit(const PageSource& firstPage) const;

    QString m_path;
    int m_compression; ///< value of the Compression tag
    int m_plannedPages;
    std::uint64_t m_limitBytes;
    std::vector<std::shared_ptr<const PageSource>> m_pages; ///< to be read again for a BigTIFF file
    std::unique_ptr<TiffFileBuilder> m_assembly; ///< null before the first page
    std::unique_ptr<StagedFile> m_finished; ///< only to be put in place
    QString m_failureReason;
};

} // namespace pagestack
