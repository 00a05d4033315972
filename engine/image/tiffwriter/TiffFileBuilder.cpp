#include "engine/image/tiffwriter/TiffFileBuilder.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiffwriter/TiffPageWriter.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <tiffio.h>

#include <array>
#include <string>
#include <utility>

namespace pagestack {

namespace {

    constexpr std::uint64_t classicHeaderBytes = 8;
    constexpr std::uint64_t bigHeaderBytes = 16;

    /// Makes the staged file; what goes wrong is a failure of the target.
    std::unique_ptr<StagedFile> staged(const QString& path)
    try {
        return std::make_unique<StagedFile>(path);
    } catch (const std::runtime_error& error) {
        throw TiffFileBuilder::WriteFailure(error.what());
    }

} // namespace

TiffFileBuilder::TiffFileBuilder(const QString& path, int compression, int plannedPages,
                                 bool bigTiff, std::uint64_t classicLimitBytes)
    : m_staged(staged(path))
    , m_compression(compression)
    , m_plannedPages(plannedPages)
    , m_isBigTiff(bigTiff)
    , m_classicLimitBytes(classicLimitBytes)
    , m_linkAt(bigTiff ? 8 : 4)
    , m_messages(QFileInfo(path).fileName())
{
    std::vector<std::uint8_t> header { 'I', 'I', static_cast<std::uint8_t>(bigTiff ? 43 : 42), 0 };
    if (bigTiff)
        header.insert(header.end(), { 8, 0, 0, 0 });
    header.resize(bigTiff ? bigHeaderBytes : classicHeaderBytes);
    m_end = header.size();
    try {
        m_staged->write(header);
    } catch (const std::runtime_error& error) {
        throw WriteFailure(error.what());
    }
}

void TiffFileBuilder::append(const PageSource& page, const EncodedPieces& pieces)
{
    cutToPages();
    TiffPageStream sink { *m_staged,
                          std::string(m_isBigTiff ? bigHeaderBytes : classicHeaderBytes, '\0'),
                          m_isBigTiff ? ~std::uint64_t { 0 } : m_classicLimitBytes,
                          false,
                          {} };
    m_messages.forget();
    const TiffPage* source = page.tiffPage();
    const auto hand = qScopeGuard([&] { // the encoder's messages are about the page
        const PageDiagnostics found = m_messages.takeDiagnostics();
        if (source != nullptr)
            source->messages().addLogLines(found.logLines);
    });
    std::vector<TextList> texts;
    std::set<unsigned> written;
    bool isShown = false;
    try {
        if (source != nullptr) {
            texts = textLists(*source);
            isShown = !keepsSamples(page);
        }
        encode(page, pieces, texts, sink);
    } catch (const std::runtime_error&) {
        if (sink.isFull)
            throw TooLarge("the file would be larger than 4 GB");
        if (!sink.writeError.empty())
            throw WriteFailure(sink.writeError);
        cutToPages();
        if (m_messages.failed()) // what the encoder said tells more than that it failed
            m_messages.fail("the page cannot be encoded");
        throw;
    }
    try {
        const std::size_t offsetBytes = m_isBigTiff ? 8 : 4;
        std::uint64_t directory = 0;
        for (std::size_t i = 2 * offsetBytes; i-- > offsetBytes;)
            directory = directory << 8U | static_cast<std::uint8_t>(sink.header.at(i));
        written = linkDirectory(directory, texts);
    } catch (const std::runtime_error& error) {
        throw WriteFailure(error.what());
    }
    ++m_pages;
    m_end = m_staged->size();
    if (source != nullptr)
        source->messages().setLeftOutTags(leftOutTags(*source, written, isShown));
}

/// Removes what is left of a page that could not be added.
void TiffFileBuilder::cutToPages()
try {
    if (m_staged->size() != m_end)
        m_staged->resize(m_end);
} catch (const std::runtime_error& error) {
    throw WriteFailure(error.what());
}

void TiffFileBuilder::encode(const PageSource& page, const EncodedPieces& pieces,
                             const std::vector<TextList>& texts, TiffPageStream& sink)
{
    // The handle writes when it is closed, too: that has to be over before the sink is looked at.
    const TiffHandle handle = openTiffPageForWriting(sink, m_isBigTiff, m_messages);
    writeTiffPage(handle.get(), page, m_compression, { m_pages, m_plannedPages }, pieces);
    // libtiff takes a text up to its first end mark: those within get their place, see finishEntry.
    for (const TextList& text : texts)
        TIFFSetField(handle.get(), text.tag,
                     QByteArray(text.bytes).replace('\0', ' ').chopped(1).constData());
    if (TIFFWriteDirectory(handle.get()) == 0 || m_messages.failed())
        m_messages.fail("the page cannot be encoded");
}

/// Hangs the directory at `directoryOffset` to the end of the chain; the tags that it has.
std::set<unsigned> TiffFileBuilder::linkDirectory(std::uint64_t directoryOffset,
                                                  const std::vector<TextList>& texts)
{
    const int countBytes = m_isBigTiff ? 8 : 2;
    const std::uint64_t entryBytes = m_isBigTiff ? 20 : 12;
    const std::uint64_t entries = number(directoryOffset, countBytes);
    const std::uint64_t first = directoryOffset + static_cast<unsigned>(countBytes);
    std::set<unsigned> tags;
    std::vector<std::uint64_t> pageNumbersAt;
    for (std::uint64_t entry = 0; entry < entries; ++entry) {
        const std::uint64_t at = first + entry * entryBytes;
        const auto tag = static_cast<unsigned>(number(at, 2));
        finishEntry(at, tag, texts, pageNumbersAt);
        tags.insert(tag);
    }
    // Last: it may be far from what was written, which until then is read from memory.
    putNumber(m_linkAt, directoryOffset, m_isBigTiff ? 8 : 4);
    m_linkAt = first + entries * entryBytes;
    m_pageNumbersAt.insert(m_pageNumbersAt.end(), pageNumbersAt.begin(), pageNumbersAt.end());
    return tags;
}

/// Notes in `pageNumbersAt` what may have to be changed in the entry later, and writes the end
/// marks within a text.
void TiffFileBuilder::finishEntry(std::uint64_t offset, unsigned tag,
                                  const std::vector<TextList>& texts,
                                  std::vector<std::uint64_t>& pageNumbersAt)
{
    const int wordBytes = m_isBigTiff ? 8 : 4;
    const std::uint64_t valueAt = offset + 4U + static_cast<unsigned>(wordBytes);
    if (tag == TIFFTAG_PAGENUMBER)
        pageNumbersAt.push_back(valueAt);
    for (const TextList& text : texts) {
        const auto size = static_cast<std::uint64_t>(text.bytes.size());
        if (text.tag != tag || number(offset + 4, wordBytes) != size)
            continue;
        const bool isInside = size <= static_cast<unsigned>(wordBytes);
        m_staged->writeAt(isInside ? valueAt : number(valueAt, wordBytes),
                          { reinterpret_cast<const std::uint8_t*>(text.bytes.constData()), size });
    }
}

std::uint64_t TiffFileBuilder::number(std::uint64_t offset, int bytes)
{
    std::array<std::uint8_t, 8> raw = {};
    m_staged->readAt(offset, std::span(raw).first(static_cast<std::size_t>(bytes)));
    std::uint64_t value = 0;
    for (int i = bytes - 1; i >= 0; --i)
        value = value << 8U | raw.at(static_cast<std::size_t>(i));
    return value;
}

void TiffFileBuilder::putNumber(std::uint64_t offset, std::uint64_t value, int bytes)
{
    std::array<std::uint8_t, 8> raw = {};
    for (int i = 0; i < bytes; ++i)
        raw.at(static_cast<std::size_t>(i))
            = static_cast<std::uint8_t>(value >> static_cast<unsigned>(8 * i));
    m_staged->writeAt(offset,
                      std::span<const std::uint8_t>(raw).first(static_cast<std::size_t>(bytes)));
}

std::unique_ptr<StagedFile> TiffFileBuilder::finish()
{
    // A cancelled run, or a page that could not be read, leaves fewer pages than were planned.
    if (m_pages != m_plannedPages)
        for (const std::uint64_t at : m_pageNumbersAt)
            putNumber(at + 2, static_cast<std::uint64_t>(m_pages), 2);
    return std::move(m_staged);
}

} // namespace pagestack
