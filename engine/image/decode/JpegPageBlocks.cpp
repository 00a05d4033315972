#include "engine/image/decode/JpegPageBlocks.h"

#include "engine/image/decode/JpegCodeWalk.h"
#include "engine/image/decode/JpegCodeWriter.h"
#include "engine/image/decode/JpegStream.h"
#include "engine/image/decode/StripDecoder.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/formats/UprightBlocks.h"
#include "engine/threads/StopScope.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>

namespace pagestack {

namespace {

    /// A row of tiles is read side by side, with a decoder for each.
    constexpr std::uint32_t mostTilesAcross = 1024;
    constexpr std::size_t bufferBytesOfAll = std::size_t { 4 } * 1024 * 1024;
    constexpr std::size_t leastBufferBytes = std::size_t { 4 } * 1024;
    constexpr std::size_t mostBufferBytes = std::size_t { 64 } * 1024;
    constexpr std::uint64_t mostUnitRowBytes = std::uint64_t { 64 } * 1024 * 1024;

    bool hasValues(tiff* handle, ttag_t tag, std::span<const float> wanted)
    {
        constexpr float tolerance = 0.001F;
        const float* values = nullptr;
        return TIFFGetField(handle, tag, &values) != 1 || values == nullptr
            || std::equal(wanted.begin(), wanted.end(), values, [](float one, float other) {
                   return std::abs(one - other) <= tolerance;
               });
    }

    /// What samples mean, as far as a JPEG file can say it (JFIF, and Adobe's marker for RGB).
    std::optional<JpegColors> colorsOf(const TiffPageTags& tags, tiff* handle)
    {
        constexpr std::array lumaOfRgb { 0.299F, 0.587F, 0.114F };
        constexpr std::array codedRange { 0.F, 255.F, 128.F, 255.F, 128.F, 255.F };
        constexpr std::array rgbRange { 0.F, 255.F, 0.F, 255.F, 0.F, 255.F };
        const bool isThree = tags.samplesPerPixel == 3 && !tags.planesAreSeparate;
        if (tags.photometric == PHOTOMETRIC_MINISBLACK && tags.samplesPerPixel == 1)
            return JpegColors::Gray;
        if (tags.photometric == PHOTOMETRIC_YCBCR && isThree
            && hasValues(handle, TIFFTAG_YCBCRCOEFFICIENTS, lumaOfRgb)
            && hasValues(handle, TIFFTAG_REFERENCEBLACKWHITE, codedRange))
            return JpegColors::YCbCr;
        // A ratio of sides alone has no place in Exif data.
        const Resolution& density = tags.resolution;
        if (tags.photometric == PHOTOMETRIC_RGB && isThree
            && (density.unit != ResolutionUnit::None || density.x == density.y)
            && hasValues(handle, TIFFTAG_REFERENCEBLACKWHITE, rgbRange))
            return JpegColors::Rgb;
        return std::nullopt;
    }

    bool isJpeg(const TiffPageTags& tags)
    {
        return (tags.compression == COMPRESSION_JPEG || tags.compression == COMPRESSION_OJPEG)
            && tags.bitsPerSample == 8 && tags.extraSamples.empty()
            && (tags.sampleFormat == SAMPLEFORMAT_UINT || tags.sampleFormat == SAMPLEFORMAT_VOID);
    }

    /// Of an old-style page whose data are one whole stream, that stream: all strips lie in it.
    std::optional<FileRange> wholeStream(tiff* handle)
    {
        std::uint64_t offset = 0;
        std::uint64_t bytes = 0;
        if (TIFFGetField(handle, TIFFTAG_JPEGIFOFFSET, &offset) != 1
            || TIFFGetField(handle, TIFFTAG_JPEGIFBYTECOUNT, &bytes) != 1 || offset == 0
            || bytes > UINT64_MAX - offset)
            return std::nullopt;
        const FileRange stream { offset, offset + bytes };
        for (std::uint32_t i = 0; i < TIFFNumberOfStrips(handle); ++i) {
            const std::uint64_t begin = TIFFGetStrileOffset(handle, i);
            const std::uint64_t count = TIFFGetStrileByteCount(handle, i);
            if (begin < stream.begin || begin > stream.end || count > stream.end - begin)
                return std::nullopt;
        }
        return stream;
    }

    /// Whether baseline coding, of the standard's codes too, has a symbol for each coefficient:
    /// up to 10 bits, and 11 for the difference between two of those in the corners.
    bool canBeCoded(std::span<const JpegBlock> blocks)
    {
        constexpr std::int16_t largest = 1023;
        JpegBlock most = {};
        JpegBlock least = {};
        for (const JpegBlock& block : blocks)
            for (std::size_t i = 0; i < block.size(); ++i) {
                most[i] = std::max(most[i], block[i]);
                least[i] = std::min(least[i], block[i]);
            }
        if (least[0] == -largest - 1)
            least[0] = -largest;
        return std::ranges::all_of(most, [](std::int16_t value) { return value <= largest; })
            && std::ranges::all_of(least, [](std::int16_t value) { return value >= -largest; });
    }

    class JoinedBlocks : public JpegBlocks
    {
    public:
        /// `whole` is the only stream, where that is not the strips' to say.
        JoinedBlocks(const TiffPage& page, tiff* handle, JpegColors colors,
                     std::optional<FileRange> whole)
            : JpegBlocks({})
            , m_page(page)
            , m_tags(page.tags())
            , m_handle(handle)
            , m_whole(whole)
            , m_streamWidth(m_tags.isTiled ? m_tags.tileWidthPx : m_tags.widthPx)
            , m_streamHeight(m_whole              ? m_tags.heightPx
                                 : m_tags.isTiled ? m_tags.tileHeightPx
                                                  : m_tags.rowsPerStrip)
        {
            const std::uint32_t across = (m_tags.widthPx - 1) / m_streamWidth + 1;
            if (across > mostTilesAcross)
                throw UnfitBlocks("too many tiles side by side");
            std::uint32_t tableBytes = 0;
            const std::uint8_t* tables = nullptr;
            if (m_tags.compression == COMPRESSION_JPEG
                && TIFFGetField(handle, TIFFTAG_JPEGTABLES, &tableBytes, &tables) == 1
                && tables != nullptr)
                m_tables.assign(tables, tables + tableBytes);
            m_bufferBytes
                = std::clamp(bufferBytesOfAll / across, leastBufferBytes, mostBufferBytes);
            for (std::uint32_t i = 0; i < across; ++i)
                m_streams.push_back(
                    std::make_unique<JpegStream>(page.document(), m_tables, m_bufferBytes));
            m_frame = m_streams.front()->begin(rangeOf(0));
            m_frame.widthPx = static_cast<int>(m_tags.widthPx);
            m_frame.heightPx = static_cast<int>(m_tags.heightPx);
            checkFrame(colors);
            m_frame.colors = colors;
            const int unitsAcross
                = static_cast<int>((m_streamWidth - 1) / unsigned(m_frame.unitWidthPx()) + 1);
            m_unitsOfStream = unitsAcross;
            std::uint64_t unitBlocks = 0;
            for (const JpegComponent& component : m_frame.components)
                unitBlocks += static_cast<unsigned>(component.horizontal * component.vertical);
            if (unitBlocks * across * static_cast<unsigned>(unitsAcross) * sizeof(JpegBlock)
                > mostUnitRowBytes)
                throw UnfitBlocks("its rows of MCUs are too long");
            m_row = JpegUnitRow(m_frame, unitsAcross * static_cast<int>(across));
        }

        void restart() override
        {
            m_next = 0;
            m_areStreamsOpen = false;
        }

        const JpegUnitRow& next() override
        {
            const int unitHeight = m_frame.unitHeightPx();
            const auto top = static_cast<std::uint32_t>(m_next * unitHeight);
            StopScope::leavePageIfStopped();
            if (top % m_streamHeight == 0) {
                finish();
                for (std::size_t i = 0; i < m_streams.size(); ++i)
                    begin(i, top / m_streamHeight, &JpegStream::begin);
                m_areStreamsOpen = true;
            }
            m_row.clear();
            for (std::size_t i = 0; i < m_streams.size(); ++i)
                m_streams[i]->next(m_row, static_cast<int>(i) * m_unitsOfStream);
            ++m_next;
            checkRange();
            return m_row;
        }

        void finish() override
        {
            if (m_areStreamsOpen)
                for (const auto& stream : m_streams)
                    stream->finish();
            m_areStreamsOpen = false;
        }

        bool hasCodes() const override
        {
            return std::ranges::all_of(m_frame.components, [](const JpegComponent& component) {
                return component.standardCodes >= 0;
            });
        }

        void readCodes(const std::function<void(std::span<const std::uint8_t>)>& take) override
        {
            JpegCodeWriter writer(take);
            std::vector<JpegCodeWalk> walks;
            for (const auto& stream : m_streams)
                walks.emplace_back(*stream, m_bufferBytes);
            for (int row = 0; row < m_frame.unitsDown(); ++row) {
                StopScope::leavePageIfStopped();
                const auto top = static_cast<std::uint32_t>(row * m_frame.unitHeightPx());
                if (top % m_streamHeight == 0) {
                    if (row > 0)
                        std::ranges::for_each(walks, &JpegCodeWalk::finish);
                    for (std::size_t i = 0; i < walks.size(); ++i) {
                        const JpegFrame found
                            = begin(i, top / m_streamHeight, &JpegStream::beginCodes);
                        if (found.components != m_frame.components)
                            throw UnfitCodes("its strips or tiles have several codes");
                        walks[i].begin(found);
                    }
                }
                int left = m_frame.unitsAcross();
                for (JpegCodeWalk& walk : walks) {
                    const int units = std::min(left, m_unitsOfStream);
                    walk.next(units, writer);
                    left -= units;
                }
            }
            std::ranges::for_each(walks, &JpegCodeWalk::finish);
            writer.finish();
        }

    private:
        bool isOneStream() const
        {
            return m_streams.size() == 1 && m_streamHeight >= m_tags.heightPx;
        }

        FileRange rangeOf(std::uint32_t number) const
        {
            if (m_whole)
                return *m_whole;
            const std::uint64_t begin = TIFFGetStrileOffset(m_handle, number);
            const std::uint64_t bytes = TIFFGetStrileByteCount(m_handle, number);
            if (begin > m_page.document().sizeBytes()
                || bytes > m_page.document().sizeBytes() - begin)
                throw UnfitBlocks("a strip or tile reaches past the end of the file");
            return { begin, begin + bytes };
        }

        /// What libtiff's decoder asks for as well, and that the MCUs of several streams fit.
        void checkFrame(JpegColors colors) const
        {
            const std::size_t components = colors == JpegColors::Gray ? 1 : 3;
            const bool isCoded = colors == JpegColors::YCbCr;
            bool isFit = m_frame.components.size() == components;
            for (std::size_t c = 0; isFit && c < components; ++c) {
                const bool isLuma = isCoded && c == 0;
                isFit = m_frame.components[c].horizontal
                        == (isLuma ? m_tags.horizontalSubsampling : 1)
                    && m_frame.components[c].vertical == (isLuma ? m_tags.verticalSubsampling : 1);
            }
            const bool isOne = isOneStream();
            if (!isFit
                || (!isOne && m_streamHeight % static_cast<unsigned>(m_frame.unitHeightPx()) != 0)
                || (m_streams.size() > 1
                    && m_streamWidth % static_cast<unsigned>(m_frame.unitWidthPx()) != 0))
                throw UnfitBlocks("the MCUs of its strips or tiles do not fit together");
        }

        /// Begins stream `number` of a row of strips or tiles, by `begins`.
        JpegFrame begin(std::size_t number, std::uint32_t row,
                        JpegFrame (JpegStream::*begins)(const FileRange&))
        {
            const std::uint32_t rowsLeft = m_tags.heightPx - row * m_streamHeight;
            const std::uint32_t rows
                = m_tags.isTiled ? m_streamHeight : std::min(m_streamHeight, rowsLeft);
            JpegFrame found = ((*m_streams[number]).*begins)(
                rangeOf(static_cast<std::uint32_t>(row * m_streams.size() + number)));
            const auto foundRows = static_cast<std::uint32_t>(found.heightPx);
            // Some writers fill the last strip up.
            const bool isFilledUp
                = !m_tags.isTiled && rows == rowsLeft && foundRows > rows && !m_whole;
            if (static_cast<std::uint32_t>(found.widthPx) != m_streamWidth
                || (foundRows != rows && !isFilledUp)
                || !std::ranges::equal(found.components, m_frame.components, isSameKind))
                throw UnfitBlocks("its strips or tiles are of several kinds");
            return found;
        }

        static bool isSameKind(const JpegComponent& one, const JpegComponent& other)
        {
            return one.horizontal == other.horizontal && one.vertical == other.vertical
                && one.quantization == other.quantization;
        }

        void checkRange() const
        {
            for (std::size_t c = 0; c < m_frame.components.size(); ++c) {
                const auto across
                    = static_cast<std::size_t>(m_frame.blocksAcross(m_frame.components[c]));
                for (int i = 0; i < m_frame.components[c].vertical; ++i)
                    if (!canBeCoded({ m_row.row(c, i), across }))
                        throw UnfitBlocks("a coefficient is out of range");
            }
        }

        const TiffPage& m_page;
        const TiffPageTags& m_tags;
        tiff* m_handle;
        const std::optional<FileRange> m_whole;
        std::uint32_t m_streamWidth; ///< of a strip or tile
        std::uint32_t m_streamHeight;
        std::vector<std::uint8_t> m_tables;
        std::vector<std::unique_ptr<JpegStream>> m_streams; ///< those side by side
        std::size_t m_bufferBytes = 0; ///< of each
        int m_unitsOfStream = 0;
        JpegUnitRow m_row;
        int m_next = 0;
        bool m_areStreamsOpen = false;
    };

} // namespace

std::shared_ptr<JpegBlocks> pageBlocks(const TiffPage& page)
{
    const TiffPageTags& tags = page.tags();
    if (!isJpeg(tags) || !page.change().isNone())
        return nullptr;
    const std::optional<JpegColors> colors = colorsOf(tags, page.load());
    if (!colors)
        return nullptr;
    page.checkSize();
    tiff* handle = page.restart();
    std::optional<FileRange> whole;
    if (tags.compression == COMPRESSION_OJPEG)
        whole = wholeStream(handle);
    if (sparseStrips(handle) > 0 || (tags.compression == COMPRESSION_OJPEG && !whole))
        return nullptr;
    auto blocks = std::make_shared<JoinedBlocks>(page, handle, *colors, whole);
    if (!canTurnBlocks(blocks->frame(), tags.orientation))
        return nullptr;
    if (!page.change().refusal.isEmpty())
        page.messages().addPageWarning(page.change().refusal);
    return blocks;
}

} // namespace pagestack
