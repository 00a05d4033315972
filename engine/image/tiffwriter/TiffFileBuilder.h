#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/pixels/PageSource.h"
#include "engine/image/tiff/TiffDirectory.h"
#include "engine/image/tiff/TiffMessages.h"
#include "engine/image/tiffwriter/CopyBatch.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/image/tiffwriter/PieceCarrier.h"
#include "engine/image/tiffwriter/TiffTagCopy.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <vector>

namespace pagestack {

class TiffPageStream;

/// The staged file of a TIFF file in the making. libtiff encodes each page by a handle of its own;
/// this class chains the directories, so that adding a page takes the same time however many there
/// are (libtiff walks the chain for each directory that it adds).
class TiffFileBuilder
{
public:
    /// The staged file takes no more, or could not be made.
    struct WriteFailure : std::runtime_error
    {
        using std::runtime_error::runtime_error;
    };
    /// The page does not fit into a classic TIFF file any more.
    struct TooLarge : std::runtime_error
    {
        using std::runtime_error::runtime_error;
    };

    /// `compression` is the value of the Compression tag; `later`, if there is one, writes encoded
    /// pieces beside. Throws WriteFailure.
    TiffFileBuilder(const QString& path, int compression, int plannedPages, bool bigTiff,
                    std::uint64_t classicLimitBytes, RunLater later);

    /// Adds a page, or its `pieces` (see writeTiffPage), at the end. Throws std::runtime_error when
    /// it cannot be decoded, WriteFailure, also of pages before it, or TooLarge; the pages before
    /// it then stay as they are, and another call may follow. Tags that are left out are noted with
    /// the page's messages.
    void append(const PageSource& page, const EncodedPieces& pieces = {});

    /// Adds as many of `pages`, in succession and of one file, as are copied without libtiff and
    /// can be at once, by the threads of `run`; returns how many. None where one of them fails:
    /// `append` meets the same. Throws WriteFailure.
    std::size_t appendCopies(PageSpan pages, const RunTogether& run);

    /// Takes back all but the first `count` of the pages that the last call of `appendCopies`
    /// added, if nothing was added since. Throws WriteFailure.
    void keepOfCopies(std::size_t count);

    /// Returns the complete file; ends the assembly. Throws std::runtime_error; another call may
    /// follow.
    std::unique_ptr<StagedFile> finish();

private:
    void appendCopy(const CopiedPage& page, const TiffPage& source);
    void appendRecoded(const EncodedPieces& pieces, const TiffPage& source, bool isCarried);
    void appendDescribed(const CopiedPage& page, const TiffPage& source,
                         const std::function<void()>& putStrips);
    void encode(const PageSource& page, const EncodedPieces& pieces, bool isRoomOnly,
                const std::vector<TextList>& texts, TiffPageStream& sink);
    void endPage(const TiffPage* source);
    void keepDate(const TiffPage& source);
    std::set<unsigned> linkDirectory(std::uint64_t offset, const std::vector<TextList>& texts);
    void cutToPages();
    void setNumber(std::uint64_t offset, std::uint64_t value, std::size_t bytes);

    std::unique_ptr<StagedFile> m_staged; ///< null once finished
    int m_compression;
    int m_plannedPages;
    TiffFormat m_format;
    std::uint64_t m_limitBytes;
    int m_pages = 0;
    std::uint64_t m_end; ///< of the pages that were added
    std::uint64_t m_linkAt; ///< where the offset of the next directory has to be written
    std::vector<std::uint64_t> m_pageNumbersAt; ///< where the values of PageNumber tags lie
    TiffMessages m_messages;

    /// What there was before the last copies, and their places.
    struct Batch
    {
        int pages = 0;
        std::uint64_t end = 0;
        std::uint64_t linkAt = 0;
        std::size_t pageNumbers = 0;
        std::vector<CopyBatch::Place> places;
    };
    Batch m_batch;
    PieceCarrier m_carrier; ///< last: it writes to the staged file
};

} // namespace pagestack
