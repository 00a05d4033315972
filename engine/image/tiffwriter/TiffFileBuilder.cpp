#include "engine/image/tiffwriter/TiffFileBuilder.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiffwriter/LeftOutTags.h"
#include "engine/image/tiffwriter/TiffMetadata.h"
#include "engine/image/tiffwriter/TiffPageStream.h"
#include "engine/image/tiffwriter/TiffPageWriter.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <tiffio.h>

#include <array>
#include <limits>

namespace pagestack {

namespace {

    /// What goes wrong in `call` is a failure of the target.
    template <typename Call>
    auto onTarget(Call call)
    try {
        return call();
    } catch (const std::runtime_error& error) {
        throw TiffFileBuilder::WriteFailure(error.what());
    }

} // namespace

TiffFileBuilder::TiffFileBuilder(const QString& path, int compression, int plannedPages,
                                 bool bigTiff, std::uint64_t classicLimitBytes, RunLater later)
    : m_compression(compression)
    , m_plannedPages(plannedPages)
    , m_format { .isBigTiff = bigTiff }
    , m_limitBytes(bigTiff ? std::numeric_limits<std::uint64_t>::max() : classicLimitBytes)
    , m_end(m_format.headerBytes())
    , m_linkAt(m_format.firstLinkAt())
    , m_messages(QFileInfo(path).fileName())
    , m_carrier(std::move(later))
{
    std::vector<std::uint8_t> header { 'I', 'I', static_cast<std::uint8_t>(bigTiff ? 43 : 42), 0 };
    if (bigTiff)
        header.push_back(8); // bytes of an offset
    header.resize(m_end);
    onTarget([&] {
        m_staged = std::make_unique<StagedFile>(path);
        m_staged->write(header);
    });
}

void TiffFileBuilder::append(const PageSource& page, const EncodedPieces& pieces)
{
    const bool isCarried = onTarget([&] {
        m_carrier.retry();
        return m_carrier.takes(pieces, *m_staged);
    });
    cutToPages();
    if (pieces.copy && !m_format.isBigTiff)
        return appendCopy(*pieces.copy, *page.tiffPage());
    if (pieces.recoded && !m_format.isBigTiff)
        return appendRecoded(pieces, *page.tiffPage(), isCarried);
    TiffPageStream sink(*m_staged, m_format, m_limitBytes);
    m_messages.forget();
    const TiffPage* source = page.tiffPage();
    const auto hand = qScopeGuard([&] { // the encoder's messages are about the page
        const PageDiagnostics found = m_messages.takeDiagnostics();
        if (source != nullptr)
            source->messages().addLogLines(found.logLines);
    });
    std::vector<TextList> texts;
    bool isShown = false;
    PageMetadata more;
    std::uint64_t directory = 0;
    try {
        if (source != nullptr) {
            if (!source->treatment().stripsMetadata)
                texts = textLists(*source);
            isShown = !keepsSamples(page);
            more = tiffMetadata(*source, isShown);
        }
        encode(page, pieces, isCarried, texts, sink);
        directory = sink.directoryOffset();
        if (!more.isEmpty())
            directory = extendDirectory(sink, m_format, directory, more);
    } catch (const std::runtime_error&) {
        if (sink.isFull())
            throw TooLarge("the file would be larger than 4 GB");
        if (!sink.writeError().empty())
            throw WriteFailure(sink.writeError());
        cutToPages();
        if (m_messages.failed()) // what the encoder said tells more than that it failed
            m_messages.fail("the page cannot be encoded");
        throw;
    }
    const std::set<unsigned> written = onTarget([&] { return linkDirectory(directory, texts); });
    const std::uint64_t begin = m_end;
    endPage(source);
    if (isCarried)
        m_carrier.add(pieces, *m_staged, begin);
    if (source != nullptr && !source->treatment().stripsMetadata)
        source->messages().setLeftOutTags(leftOutTags(*source, written, isShown) + more.leftOut);
}

void TiffFileBuilder::appendCopy(const CopiedPage& page, const TiffPage& source)
{
    source.messages().forget();
    appendDescribed(page, source, [&] {
        const auto put = [this](std::span<const std::uint8_t> bytes) {
            onTarget([&] { m_staged->write(bytes); });
        };
        const std::span<std::uint8_t> buffer = copyBuffer();
        put(buffer.first(readPieces(page.read.pieces, source.document(), buffer, put)));
    });
}

void TiffFileBuilder::appendRecoded(const EncodedPieces& pieces, const TiffPage& source,
                                    bool isCarried)
{
    const std::uint64_t begin = m_end;
    source.reader().adopt(source.index(), pieces.diagnostics);
    appendDescribed(*pieces.recoded, source, [&] {
        if (isCarried) {
            onTarget([&] { m_staged->reserve(pieces.recoded->read.pieceBytes); });
            return;
        }
        std::vector<std::uint8_t> strip;
        for (const PlainDirectory::Piece& piece : pieces.recoded->read.pieces) {
            strip.resize(piece.bytes);
            pieces.bytes->readAt(piece.offset, strip);
            onTarget([&] { m_staged->write(strip); });
        }
    });
    if (isCarried)
        m_carrier.add(pieces, *m_staged, begin);
}

/// A page that libtiff has no part in.
void TiffFileBuilder::appendDescribed(const CopiedPage& page, const TiffPage& source,
                                      const std::function<void()>& putStrips)
{
    const CopiedDirectory directory
        = copiedDirectory(page, source, { m_pages, m_plannedPages }, m_end);
    if (directory.offset + directory.bytes.size() > m_limitBytes)
        throw TooLarge("the file would be larger than 4 GB");
    putStrips();
    onTarget([&] {
        m_staged->writeAt(directory.offset, directory.bytes);
        setNumber(m_linkAt, directory.offset, m_format.offsetBytes());
    });
    m_linkAt = directory.linkAt;
    if (directory.pageNumberAt)
        m_pageNumbersAt.push_back(*directory.pageNumberAt);
    endPage(&source);
}

std::size_t TiffFileBuilder::appendCopies(PageSpan pages, const RunTogether& run)
{
    if (m_format.isBigTiff)
        return 0;
    cutToPages();
    CopyBatch batch(pages, m_compression, { m_pages, m_plannedPages }, run);
    const std::uint64_t end = batch.place(m_end, m_limitBytes);
    if (batch.count() == 0)
        return 0;
    return onTarget([&]() -> std::size_t {
        m_staged->reserve(end - m_end);
        if (!batch.copyTo(*m_staged)) {
            m_staged->resize(m_end);
            return 0;
        }
        m_batch = { m_pages, m_end, m_linkAt, m_pageNumbersAt.size(), batch.places() };
        const TiffPage& source = *pages.front()->tiffPage();
        source.messages().forget();
        keepOfCopies(batch.count());
        keepDate(source);
        return batch.count();
    });
}

void TiffFileBuilder::keepOfCopies(std::size_t count)
{
    onTarget([&] {
        m_pages = m_batch.pages + static_cast<int>(count);
        m_end = count == 0 ? m_batch.end : m_batch.places[count - 1].end;
        m_pageNumbersAt.resize(m_batch.pageNumbers);
        for (const CopyBatch::Place& place : std::span(m_batch.places).first(count))
            if (place.pageNumberAt)
                m_pageNumbersAt.push_back(*place.pageNumberAt);
        cutToPages();
        m_linkAt = m_batch.linkAt;
        setNumber(m_linkAt, count == 0 ? 0 : m_batch.places.front().directoryAt,
                  m_format.offsetBytes());
        if (count > 0) {
            m_linkAt = m_batch.places[count - 1].linkAt;
            setNumber(m_linkAt, 0, m_format.offsetBytes());
        }
    });
}

void TiffFileBuilder::endPage(const TiffPage* source)
{
    ++m_pages;
    m_end = m_staged->size();
    if (source != nullptr)
        keepDate(*source);
}

void TiffFileBuilder::keepDate(const TiffPage& source)
{
    if (source.treatment().keepsDate)
        m_staged->setModified(source.document().stateAtOpening().modifiedNs);
}

/// Removes what is left of a page that could not be added.
void TiffFileBuilder::cutToPages()
{
    onTarget([this] {
        if (m_staged->size() != m_end)
            m_staged->resize(m_end);
    });
}

void TiffFileBuilder::encode(const PageSource& page, const EncodedPieces& pieces, bool isRoomOnly,
                             const std::vector<TextList>& texts, TiffPageStream& sink)
{
    // The handle writes when it is closed, too: that has to be over before the sink is looked at.
    const TiffHandle handle = openTiff(sink, m_format.isBigTiff ? "w8" : "w", m_messages);
    if (isRoomOnly) {
        EncodedPieces room = pieces;
        room.isRoomOnly = true;
        sink.setReserve([this](std::uint64_t bytes) { m_staged->reserve(bytes); });
        writeTiffPage(handle.get(), page, m_compression, { m_pages, m_plannedPages }, room);
        sink.setReserve({});
    } else {
        writeTiffPage(handle.get(), page, m_compression, { m_pages, m_plannedPages }, pieces);
    }
    // libtiff takes a text up to its first end mark: linkDirectory puts those within in their
    // place.
    for (const TextList& text : texts)
        TIFFSetField(handle.get(), text.tag,
                     QByteArray(text.bytes).replace('\0', ' ').chopped(1).constData());
    if (TIFFWriteDirectory(handle.get()) == 0 || m_messages.failed())
        m_messages.fail("the page cannot be encoded");
}

/// Hangs the directory at `offset` to the end of the chain; the tags that it has.
std::set<unsigned> TiffFileBuilder::linkDirectory(std::uint64_t offset,
                                                  const std::vector<TextList>& texts)
{
    const TiffDirectory directory = readDirectory(
        [this](std::uint64_t at, std::span<std::uint8_t> bytes) { m_staged->readAt(at, bytes); },
        m_format, offset);
    std::set<unsigned> tags;
    std::vector<std::uint64_t> pageNumbersAt;
    for (const TiffTagValue& value : directory.values) {
        tags.insert(value.tag);
        if (value.tag == TIFFTAG_PAGENUMBER)
            pageNumbersAt.push_back(value.offset);
        for (const TextList& text : texts)
            if (text.tag == value.tag && text.bytes.size() == static_cast<qint64>(value.count))
                m_staged->writeAt(
                    value.offset,
                    { reinterpret_cast<const std::uint8_t*>(text.bytes.data()), value.count });
    }
    // Last: it may be far from what was written, which until then is read from memory.
    setNumber(m_linkAt, offset, m_format.offsetBytes());
    m_linkAt = directory.range.end - m_format.offsetBytes();
    m_pageNumbersAt.insert(m_pageNumbersAt.end(), pageNumbersAt.begin(), pageNumbersAt.end());
    return tags;
}

void TiffFileBuilder::setNumber(std::uint64_t offset, std::uint64_t value, std::size_t bytes)
{
    std::array<std::uint8_t, 8> raw = {};
    putNumber(raw, value, false);
    m_staged->writeAt(offset, std::span<const std::uint8_t>(raw).first(bytes));
}

std::unique_ptr<StagedFile> TiffFileBuilder::finish()
{
    m_carrier.finish();
    cutToPages(); // of a last page that could not be added
    // A cancelled run, or a page that could not be read, leaves fewer pages than were planned.
    if (m_pages != m_plannedPages)
        for (const std::uint64_t at : m_pageNumbersAt)
            setNumber(at + 2, static_cast<std::uint64_t>(m_pages), 2);
    return std::move(m_staged);
}

} // namespace pagestack
