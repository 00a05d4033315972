#include "engine/image/MultiPageTiffWriter.h"

#include "engine/image/PrefetchedPage.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiffwriter/TiffFileBuilder.h"
#include "engine/settings/OutputCodes.h"

#include <tiffio.h>

#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// What page `index` will take in the output, as a rule rather than at the most: a file that
    /// grows past the limit all the same is begun again.
    std::uint64_t likelyBytes(TiffFile& file, int index, int compression)
    {
        const TiffPageTags tags = readTiffPageTags(file.describe(index));
        const std::uint64_t decoded = tags.decodedBytes();
        const bool isFax
            = compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
        return isFax && tags.isOneBitDeep() ? decoded / 4 : decoded;
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

MultiPageTiffWriter::~MultiPageTiffWriter() = default;

bool MultiPageTiffWriter::couldPassLimit(const PageImage& firstPage) const
{
    const TiffPage* page = firstPage.source().tiffPage();
    if (page == nullptr)
        return false;
    const int first = page->index();
    const int pages = static_cast<int>(page->file().chain().offsets.size());
    const int last = std::min(pages, first + m_plannedPages);
    std::uint64_t sum = 0;
    for (int index = first; index < last && sum <= m_limitBytes; ++index) {
        try {
            sum += likelyBytes(page->file(), index, m_compression);
        } catch (const std::runtime_error&) {
            continue; // a page that cannot be read takes nothing; it is reported when its turn
                      // comes
        }
    }
    return sum > m_limitBytes;
}

void MultiPageTiffWriter::append(const PageImage& page) { append(page, {}); }

void MultiPageTiffWriter::append(const PageImage& page, PrefetchedPage prepared)
{
    if (prepared.file) {
        Q_ASSERT(m_plannedPages == 1 && m_pages.empty());
        page.adopt(prepared.diagnostics);
        m_complete = std::move(prepared.file);
    } else if (m_failureReason.isEmpty()) {
        write(page, prepared.pieces.bytes ? &prepared.pieces : nullptr);
    }
    // A file can have very many pages.
    if (const TiffPage* read = page.source().tiffPage())
        read->forgetTags();
    m_pages.push_back(page.sharedSource());
}

void MultiPageTiffWriter::appendAgain(const PageImage& page)
{
    m_failureReason.clear();
    m_pages.pop_back();
    append(page);
}

void MultiPageTiffWriter::write(const PageImage& page, const EncodedPieces* pieces)
{
    try {
        try {
            if (!m_assembly && !m_pages.empty())
                rebuildAsBigTiff(); // that failed before
            if (!m_assembly)
                m_assembly = std::make_unique<TiffFileBuilder>(
                    m_path, m_compression, m_plannedPages, couldPassLimit(page), m_limitBytes);
            m_assembly->append(page.source(), pieces);
        } catch (const TiffFileBuilder::TooLarge&) {
            rebuildAsBigTiff();
            m_assembly->append(page.source(), pieces);
        }
    } catch (const TiffFileBuilder::WriteFailure& failure) {
        m_failureReason = QString::fromStdString(failure.what());
    }
}

void MultiPageTiffWriter::rebuildAsBigTiff()
try {
    m_assembly.reset();
    m_assembly = std::make_unique<TiffFileBuilder>(m_path, m_compression, m_plannedPages, true,
                                                   m_limitBytes);
    for (const std::shared_ptr<const PageSource>& page : m_pages) {
        m_assembly->append(*page);
        if (const TiffPage* read = page->tiffPage())
            read->forgetTags();
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
    if (!m_failureReason.isEmpty())
        throw std::runtime_error(m_failureReason.toStdString());
    return m_complete ? std::move(m_complete) : m_assembly->finish();
}

bool MultiPageTiffWriter::commit(StagedFile::Existing existing,
                                 const std::optional<FileState>& expected)
{
    try {
        if (!m_finished)
            m_finished = finish();
        m_finished->commit(existing, expected);
        m_failureReason.clear();
        return true;
    } catch (const std::exception& error) {
        m_failureReason = QString::fromStdString(error.what());
        return false;
    }
}

} // namespace pagestack
