#include "engine/image/decode/StripDecoder.h"

#include "engine/image/decode/JpegTail.h"
#include "engine/image/decode/LzwDecoder.h"
#include "engine/image/decode/NoDataValue.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiff/TiffLimits.h"

#include <tiffio.h>

#include <algorithm>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::uint64_t mostPaddingBytes = std::uint64_t { 64 } * 1024 * 1024;
    constexpr std::uint64_t longestJudgedStream = std::uint64_t { 64 } * 1024 * 1024;

    bool isDeflate(const TiffPageTags& tags)
    {
        return tags.compression == COMPRESSION_DEFLATE
            || tags.compression == COMPRESSION_ADOBE_DEFLATE;
    }

    bool isSparseAt(tiff* handle, std::uint32_t number)
    {
        return TIFFGetStrileOffset(handle, number) == 0
            && TIFFGetStrileByteCount(handle, number) == 0;
    }

} // namespace

bool isDecodedByLibtiff(const TiffPageTags& tags)
{
    return !isDeflate(tags) && tags.compression != COMPRESSION_PACKBITS;
}

std::uint32_t sparseStrips(tiff* handle)
{
    const std::uint32_t count = piecesOf(handle);
    std::uint32_t sparse = 0;
    for (std::uint32_t number = 0; number < count; ++number)
        sparse += isSparseAt(handle, number) ? 1 : 0;
    return sparse;
}

StripDecoder::StripDecoder(const TiffPage& page, tiff* handle)
    : m_page(page)
    , m_handle(handle)
    , m_tags(page.tags())
    , m_rowBytes(static_cast<std::size_t>(m_tags.isTiled ? TIFFTileRowSize(handle)
                                                         : TIFFScanlineSize(handle)))
{
    if (!isDecodedByLibtiff(m_tags)
        || (m_tags.compression == COMPRESSION_LZW && SampleOrder::knows(m_tags)))
        m_order.emplace(m_tags, TIFFIsByteSwapped(handle) != 0);
    if (m_order && PieceDecoder::knows(m_tags))
        m_pieces.emplace(page.document(), m_tags, *m_order, m_rowBytes);
    if (m_tags.hasRowsBehindStrips)
        tellOfRest();
    const std::uint32_t sparse = sparseStrips(handle);
    if (sparse == 0)
        return;
    const NoDataValue noData = noDataValue(page);
    m_noData = noData.bits;
    const QString text = sparse == 1
        ? u"%1 of its %2 %3 has no data in the file and is filled with %4"_s
        : u"%1 of its %2 %3 have no data in the file and are filled with %4"_s;
    page.messages().addPageWarning(
        text.arg(sparse)
            .arg(piecesOf(handle))
            .arg(m_tags.isTiled ? u"tiles"_s : u"strips"_s, noData.text));
}

EncodedBytes StripDecoder::encoded(std::uint32_t number) const
{
    return { m_page.document(), TIFFGetStrileOffset(m_handle, number),
             TIFFGetStrileByteCount(m_handle, number),
             m_tags.fillOrder == FILLORDER_LSB2MSB && m_tags.compression != COMPRESSION_JPEG };
}

std::unique_ptr<StripStream> StripDecoder::openStream(std::uint32_t number) const
{
    return isDeflate(m_tags) ? inflateStream(encoded(number)) : packBitsStream(encoded(number));
}

PiecePlace StripDecoder::place(std::uint32_t number) const
{
    return { TIFFGetStrileOffset(m_handle, number), TIFFGetStrileByteCount(m_handle, number) };
}

void StripDecoder::decode(std::uint32_t number, std::span<std::uint8_t> to)
{
    if (!m_pieces || !m_pieces->decode(place(number), to, m_encoded))
        decodeDoubtful(number, to);
}

void StripDecoder::decodeDoubtful(std::uint32_t number, std::span<std::uint8_t> to)
{
    if (isSparseAt(m_handle, number)) {
        fillSamples(to, m_rowBytes, m_tags.bitsPerSample, m_noData);
    } else if (!isDecodedByLibtiff(m_tags)) {
        if (!isDeflate(m_tags) || !inflatedWhole(number, to)) {
            const std::unique_ptr<StripStream> stream = openStream(number);
            stream->read(to);
            endStream(*stream, to.size() / m_rowBytes);
        }
        m_order->restore(to, m_rowBytes);
    } else {
        check(decodedByLibtiff(number, to), number);
        endLzw(number, to.size() / m_rowBytes);
    }
}

bool StripDecoder::inflatedWhole(std::uint32_t number, std::span<std::uint8_t> to) const
{
    EncodedBytes bytes = encoded(number);
    return bytes.left() <= PieceDecoder::mostBytes
        && isFitting(inflateWhole(bytes.next(bytes.left()), to));
}

/// Some writers fill the last strip up to RowsPerStrip rows. Anything else behind the rows is no
/// sign of sound data.
std::uint64_t StripDecoder::paddingBytes(std::uint64_t rows) const
{
    std::uint32_t stripRows = 0;
    if (m_tags.isTiled || TIFFGetField(m_handle, TIFFTAG_ROWSPERSTRIP, &stripRows) != 1
        || stripRows <= rows)
        return 0;
    return std::min((stripRows - rows) * m_rowBytes, mostPaddingBytes);
}

void StripDecoder::endLzw(std::uint32_t number, std::uint64_t rows)
{
    if (m_tags.compression != COMPRESSION_LZW || m_tags.isSubsampled() || m_rowBytes == 0)
        return;
    EncodedBytes bytes = encoded(number);
    const std::uint64_t padding = paddingBytes(rows);
    if (bytes.left() <= longestJudgedStream && padding < mostPaddingBytes
        && decodedLzwBytes(bytes.next(bytes.left())) / m_rowBytes > rows + padding / m_rowBytes)
        tellOfRest();
}

void StripDecoder::tellOfRest()
{
    m_page.messages().addPageWarning(
        u"its strips or tiles hold more than their rows; the rest is left out"_s);
}

void StripDecoder::endStream(StripStream& stream, std::uint64_t rows)
{
    const std::uint64_t padding = paddingBytes(rows);
    const std::uint64_t most = padding + mostPaddingBytes;
    const std::uint64_t rest = stream.skipRest(most);
    if (rest > most)
        throw std::runtime_error("its strips hold far more than their rows");
    if (rest > padding || rest % m_rowBytes != 0)
        tellOfRest();
}

bool StripDecoder::decodedByLibtiff(std::uint32_t number, std::span<std::uint8_t> to)
{
    if (m_tags.isTiled)
        return decodedTile(number, to);
    const auto size = static_cast<tmsize_t>(to.size());
    return TIFFReadEncodedStrip(m_handle, number, to.data(), size) == size;
}

bool StripDecoder::decodedTile(std::uint32_t number, std::span<std::uint8_t> to)
{
    const auto decodeOver = [&](std::span<std::uint8_t> bytes, std::uint8_t before) {
        std::fill(bytes.begin(), bytes.end(), before);
        const auto size = static_cast<tmsize_t>(bytes.size());
        return TIFFReadEncodedTile(m_handle, number, bytes.data(), size) == size;
    };
    if (!decodeOver(to, 0))
        return false;
    if (!m_tags.isFax() || m_tags.samplesInPlane() > 1)
        return true;
    // libtiff 4.5 calls it a success when the data of a fax tile end between two rows, and leaves
    // the other rows as they were: they differ when it starts from other bytes.
    m_scratch.resize(to.size());
    return decodeOver(m_scratch, 0xFF) && std::equal(to.begin(), to.end(), m_scratch.begin());
}

void StripDecoder::begin(std::uint32_t strip, std::uint32_t rows)
{
    m_strip = strip;
    m_row = strip * m_tags.rowsPerStrip;
    m_rows = m_rowsLeft = rows;
    m_isStripSparse = isSparseAt(m_handle, strip);
    m_stream = !isDecodedByLibtiff(m_tags) && !m_isStripSparse ? openStream(strip) : nullptr;
}

void StripDecoder::nextRow(std::span<std::uint8_t> to)
{
    --m_rowsLeft;
    if (m_isStripSparse) {
        fillSamples(to, m_rowBytes, m_tags.bitsPerSample, m_noData);
    } else if (m_stream) {
        m_stream->read(to);
        if (m_rowsLeft == 0)
            endStream(*m_stream, m_rows);
        m_order->restore(to, m_rowBytes);
    } else {
        check(TIFFReadScanline(m_handle, to.data(), m_row, 0) == 1, m_strip);
        // Behind the page, not between its strips: it takes a fifth of the time of decoding.
        if (m_rowsLeft == 0 && m_row + 1 == m_tags.heightPx)
            endLzw(m_strip, m_rows);
    }
    ++m_row;
}

/// After libtiff has decoded something of the strip or tile.
void StripDecoder::check(bool ok, std::uint32_t number)
{
    TiffMessages& messages = m_page.messages();
    if (!ok || messages.failed())
        messages.fail("the pixels cannot be decoded");
    if (const std::optional<std::uint64_t> left = messages.takeJpegTail())
        judgeTail(number, *left);
    if (messages.takeProgressiveJpeg())
        checkScans(number);
}

void StripDecoder::checkScans(std::uint32_t number)
{
    EncodedBytes bytes = encoded(number);
    if (bytes.left() > longestJudgedStream)
        throw std::runtime_error("its progressive JPEG data are too large to be looked through");
    if (!hasAllScans(bytes.next(bytes.left())))
        throw std::runtime_error("its progressive JPEG data lack scans");
}

void StripDecoder::judgeTail(std::uint32_t number, std::uint64_t leftBytes)
{
    EncodedBytes bytes = encoded(number);
    const JpegTail tail = bytes.left() <= longestJudgedStream
        ? judgeJpegTail(bytes.next(bytes.left()), leftBytes)
        : JpegTail::Unknown;
    if (tail == JpegTail::LostRestarts)
        throw std::runtime_error("its JPEG data lack restart markers, and pixels with them");
    if (tail == JpegTail::Unknown)
        m_page.messages().addPageWarning(TiffMessages::jpegTailWarning());
}

} // namespace pagestack
