#include "engine/image/tiffwriter/MultiPageTiffWriter.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/settings/OutputCodes.h"

#include <tiffio.h>

#include <optional>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// What its strips or tiles take where they are copied.
    std::uint64_t encodedBytes(tiff* handle)
    {
        const std::uint32_t count = piecesOf(handle);
        std::uint64_t bytes = 0;
        for (std::uint32_t i = 0; i < count; ++i)
            bytes += TIFFGetStrileByteCount(handle, i);
        return bytes;
    }

} // namespace

MultiPageTiffWriter::MultiPageTiffWriter(QString path, int compressionIndex, int plannedPages,
                                         std::uint64_t limitBytes)
    : m_path(std::move(path))
    , m_compression(tiffCompressionTag(compressionIndex))
    , m_plannedPages(plannedPages)
    , m_limitBytes(limitBytes)
{
}

/// Whether the pages from `firstPage` on will, as a rule rather than at the most, take more than a
/// classic file holds. A file that grows past the limit all the same is begun again.
bool MultiPageTiffWriter::couldPassLimit(const PageSource& firstPage,
                                         const EncodedPieces& pieces) const
{
    const TiffPage* page = firstPage.tiffPage();
    if (page == nullptr)
        return false;
    const int last = std::min(page->document().pageCount(), page->index() + m_plannedPages);
    // A reader of its own: what is said of later pages comes again in their turn.
    std::optional<TiffReader> ahead;
    const auto bytesOf = [&](const PlainDirectory& read) {
        return expectedBytes(read.tags, page->treatment(), [&] { return read.pieceBytes; });
    };
    std::uint64_t sum = pieces.copy ? bytesOf(pieces.copy->read) : 0;
    for (int index = page->index() + (pieces.copy ? 1 : 0); index < last && sum <= m_limitBytes;
         ++index) {
        try {
            if (const auto read = plainDirectory(page->document(), index)) {
                sum += bytesOf(*read);
                continue;
            }
            if (index != page->index() && !ahead)
                ahead.emplace(page->reader().sharedDocument());
            tiff* const handle = index == page->index() ? page->load() : ahead->load(index);
            sum += expectedBytes(index == page->index() ? page->tags() : readTiffPageTags(handle),
                                 page->treatment(), [&] { return encodedBytes(handle); });
        } catch (const std::runtime_error&) {
            continue; // a page that cannot be read takes nothing, and is reported in its turn
        }
    }
    return sum > m_limitBytes;
}

/// `encoded` gives the bytes that the strips or tiles of the page have.
std::uint64_t
MultiPageTiffWriter::expectedBytes(const TiffPageTags& tags, const PageTreatment& treatment,
                                   const std::function<std::uint64_t()>& encoded) const
{
    const bool isFax
        = m_compression == COMPRESSION_CCITTFAX3 || m_compression == COMPRESSION_CCITTFAX4;
    const bool isReduced = becomesBilevel(tags, treatment);
    const std::uint64_t bytes = isReduced ? (std::uint64_t { tags.widthPx } + 7) / 8 * tags.heightPx
        : treatment.keepsCompression      ? encoded()
                                          : tags.decodedBytes();
    return bytes / (isFax && (isReduced || tags.isOneBitDeep()) ? 4 : 1);
}

void MultiPageTiffWriter::append(const std::shared_ptr<const PageSource>& page,
                                 const EncodedPieces& pieces)
{
    if (m_failureReason.isEmpty()) {
        EncodedPieces copied;
        if (!pieces.bytes && !pieces.copy)
            copied.copy = copiedPage(*page, m_compression);
        write(*page, copied.copy ? copied : pieces);
    }
    gather(page);
}

std::size_t MultiPageTiffWriter::appendCopies(PageSpan pages, const RunTogether& run)
try {
    EncodedPieces first;
    first.copy = copiedPage(*pages.front(), m_compression);
    if (!first.copy || !m_failureReason.isEmpty() || (!m_assembly && !m_pages.empty()))
        return 0;
    if (!m_assembly)
        begin(couldPassLimit(*pages.front(), first));
    m_lastCopies = m_assembly->appendCopies(pages, run);
    for (const std::shared_ptr<const PageSource>& page : pages.first(m_lastCopies))
        gather(page);
    return m_lastCopies;
} catch (const TiffFileBuilder::WriteFailure&) {
    return 0;
}

void MultiPageTiffWriter::takeBackCopies(std::size_t count)
try {
    m_lastCopies -= count;
    m_pages.resize(m_pages.size() - count);
    m_assembly->keepOfCopies(m_lastCopies);
} catch (const TiffFileBuilder::WriteFailure& failure) {
    m_failureReason = QString::fromStdString(failure.what());
}

void MultiPageTiffWriter::appendEncoded(const std::shared_ptr<const PageSource>& page,
                                        std::unique_ptr<StagedFile> file)
{
    Q_ASSERT(m_plannedPages == 1 && m_pages.empty());
    m_finished = std::move(file);
    gather(page);
}

void MultiPageTiffWriter::appendAgain(const std::shared_ptr<const PageSource>& page)
{
    m_failureReason.clear();
    m_pages.pop_back();
    append(page);
}

void MultiPageTiffWriter::gather(const std::shared_ptr<const PageSource>& page)
{
    if (const TiffPage* read = page->tiffPage())
        read->forgetTags(); // a file can have very many pages
    m_pages.push_back(page);
}

void MultiPageTiffWriter::write(const PageSource& page, const EncodedPieces& pieces)
try {
    if (!m_assembly) // with pages: beginning again has failed before
        begin(!m_pages.empty() || couldPassLimit(page, pieces));
    try {
        m_assembly->append(page, pieces);
    } catch (const TiffFileBuilder::TooLarge&) {
        begin(true);
        m_assembly->append(page, pieces);
    }
} catch (const TiffFileBuilder::WriteFailure& failure) {
    m_failureReason = QString::fromStdString(failure.what());
}

/// Begins the file with the pages gathered so far.
void MultiPageTiffWriter::begin(bool bigTiff)
try {
    m_assembly.reset();
    m_assembly = std::make_unique<TiffFileBuilder>(m_path, m_compression, m_plannedPages, bigTiff,
                                                   m_limitBytes, m_later);
    for (const std::shared_ptr<const PageSource>& page : m_pages) {
        m_assembly->append(*page);
        if (const TiffPage* read = page->tiffPage()) {
            read->forgetTags();
            read->messages().takeDiagnostics(); // told in its turn
        }
    }
} catch (const std::exception& error) {
    // A page that could be read before: without it the file would not be what was gathered.
    m_assembly.reset();
    throw TiffFileBuilder::WriteFailure(error.what());
}

std::unique_ptr<StagedFile> MultiPageTiffWriter::finish()
{
    if (m_pages.empty() && m_failureReason.isEmpty())
        m_failureReason = u"no page could be read"_s;
    if (!m_failureReason.isEmpty() && !m_isEnded)
        throw std::runtime_error(m_failureReason.toStdString());
    m_isEnded = true;
    return m_finished ? std::move(m_finished) : m_assembly->finish();
}

bool MultiPageTiffWriter::commit(StagedFile::Existing existing,
                                 const std::optional<FileState>& expected)
{
    try {
        if (!m_finished)
            m_finished = finish();
        if (m_check)
            m_check(*m_finished);
        m_finished->commit(existing, expected);
        m_failureReason.clear();
        return true;
    } catch (const std::exception& error) {
        m_failureReason = QString::fromStdString(error.what());
        return false;
    }
}

} // namespace pagestack
