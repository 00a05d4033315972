#pragma once

#include "engine/image/tiffwriter/TiffFileBuilder.h"

#include <functional>

namespace pagestack {

struct PageTreatment;

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

    /// A file for `path` of probably `plannedPages` pages, made when the first one comes.
    /// `compressionIndex` as in Settings::tiffCompressionIndex. `limitBytes` is for tests.
    MultiPageTiffWriter(QString path, int compressionIndex, int plannedPages,
                        std::uint64_t limitBytes = classicLimitBytes);

    /// Encoded pieces are written by `later`, beside what follows. Before the first page.
    void setLater(RunLater later) { m_later = std::move(later); }

    /// Adds the page, or its `pieces` from `encodePieces` with the same compression. Throws
    /// std::runtime_error when the page cannot be decoded completely; the staged file is then as it
    /// was before. The failure of a target that takes no more (full disk, no permission) is kept
    /// for `commit`; this page and later ones then only count as gathered. Of pieces that are
    /// written beside, it shows with a later page or with `commit`.
    void append(const std::shared_ptr<const PageSource>& page, const EncodedPieces& pieces = {});

    /// Adds as many of `pages`, in succession and of one file, as can be copied at once by the
    /// threads of `run`; returns how many. 0 where `append` has to take the first one, also where
    /// something fails, which it meets again.
    std::size_t appendCopies(PageSpan pages, const RunTogether& run);

    /// Takes back the last `count` of the pages that the last call of `appendCopies` added.
    void takeBackCopies(std::size_t count);

    /// `check` looks at the complete file before it is put in place; what it throws is the failure
    /// of `commit`.
    void setCheck(std::function<void(StagedFile& file)> check) { m_check = std::move(check); }

    /// Takes the result of `encodedPage` for the same path and compression as the only `page`.
    void appendEncoded(const std::shared_ptr<const PageSource>& page,
                       std::unique_ptr<StagedFile> file);

    /// Appends the last page, which has caused the `failureReason`, once more: there may be room
    /// for it now. Throws as `append`.
    void appendAgain(const std::shared_ptr<const PageSource>& page);

    int pageCount() const { return static_cast<int>(m_pages.size()); } ///< gathered so far

    /// Returns the complete file, to be put in place; ends the gathering. Throws std::runtime_error
    /// if nothing was gathered or the file could not be written; of pieces that were written
    /// beside, another call may be luckier.
    std::unique_ptr<StagedFile> finish();

    /// Puts the file in place, with `expected` as for StagedFile::commit. On a failure returns
    /// false and leaves what was at the path; may be tried again.
    bool commit(StagedFile::Existing existing = StagedFile::Existing::Replaced,
                const std::optional<FileState>& expected = std::nullopt);

    /// As StagedFile::isDateKept, of the file in place.
    bool isDateKept() const { return !m_finished || m_finished->isDateKept(); }

    /// Why `commit` returned, or will return, false; empty after a success.
    QString failureReason() const { return m_failureReason; }

private:
    void write(const PageSource& page, const EncodedPieces& pieces);
    void begin(bool bigTiff);
    void gather(const std::shared_ptr<const PageSource>& page);
    bool couldPassLimit(const PageSource& firstPage, const EncodedPieces& pieces) const;
    std::uint64_t expectedBytes(const TiffPageTags& tags, const PageTreatment& treatment,
                                const std::function<std::uint64_t()>& encoded) const;

    QString m_path;
    int m_compression; ///< value of the Compression tag
    int m_plannedPages;
    std::uint64_t m_limitBytes;
    std::vector<std::shared_ptr<const PageSource>> m_pages; ///< to be read again for a BigTIFF file
    std::unique_ptr<TiffFileBuilder> m_assembly; ///< null before the first page
    std::unique_ptr<StagedFile> m_finished; ///< only to be put in place
    std::size_t m_lastCopies = 0; ///< pages that the last `appendCopies` added
    bool m_isEnded = false; ///< all pages were taken: what fails since may be tried again
    RunLater m_later;
    std::function<void(StagedFile& file)> m_check;
    QString m_failureReason;
};

} // namespace pagestack
