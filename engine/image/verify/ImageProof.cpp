#include "engine/image/verify/ImageProof.h"

#include "engine/image/pixels/RowConversions.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

namespace pagestack {

namespace {

    constexpr int largestPalette = 256;

    bool hasIndexes(const PixelLayout& layout)
    {
        return layout.model != ColorModel::Rgb && layout.alpha == AlphaKind::None
            && layout.bitsPerSample <= 8;
    }

    /// The layout with a palette for the levels of gray, which some formats know no other way.
    PixelLayout withPalette(PixelLayout layout)
    {
        if (layout.model != ColorModel::Gray || !hasIndexes(layout))
            return layout;
        layout.model = ColorModel::Palette;
        const int last = (1 << layout.bitsPerSample) - 1;
        for (int i = 0; i <= last; ++i) {
            const auto level = static_cast<std::uint8_t>(i * 255 / last);
            layout.palette.push_back({ level, level, level });
        }
        return layout;
    }

    class ProvedRows : public RowSource
    {
    public:
        ProvedRows(std::unique_ptr<RowSource> rows, KeptPixels kept, ImageProof& proof)
            : RowSource(rows->widthPx(), rows->heightPx(), rows->layout())
            , m_rows(std::move(rows))
            , m_maker(widthPx(), layout(), kept)
            , m_proof(proof)
        {
            m_proof = {};
        }

        Band nextBand() override
        {
            const Band band = m_rows->nextBand();
            for (int i = 0; i < band.rows; ++i)
                m_maker.add(band.row(i));
            m_proof = m_maker.proof();
            return band;
        }

    private:
        std::unique_ptr<RowSource> m_rows;
        ProofMaker m_maker;
        ImageProof& m_proof;
    };

    class ProvedBlocks : public JpegBlocks
    {
    public:
        ProvedBlocks(std::shared_ptr<JpegBlocks> blocks, ImageProof& proof)
            : JpegBlocks(blocks->frame())
            , m_blocks(std::move(blocks))
            , m_proof(proof)
        {
        }

        void restart() override
        {
            m_maker.emplace(frame());
            m_blocks->restart();
        }

        const JpegUnitRow& next() override
        {
            const JpegUnitRow& row = m_blocks->next();
            m_maker->add(row);
            m_proof = m_maker->proof();
            return row;
        }

        void finish() override { m_blocks->finish(); }

        bool hasCodes() const override { return m_blocks->hasCodes(); }

        /// The proof is that of the coefficients all the same, read by another reader.
        void readCodes(const std::function<void(std::span<const std::uint8_t>)>& take) override
        {
            m_blocks->readCodes(take);
            restart();
            for (int row = 0; row < frame().unitsDown(); ++row)
                next();
            finish();
        }

    private:
        std::shared_ptr<JpegBlocks> m_blocks;
        std::optional<BlockProofMaker> m_maker; ///< of the last pass
        ImageProof& m_proof;
    };

    std::string sizeText(const ImageProof& image)
    {
        return std::to_string(image.widthPx) + " x " + std::to_string(image.heightPx);
    }

} // namespace

ProofMaker::ProofMaker(int widthPx, PixelLayout layout, KeptPixels kept)
    : m_layout(withPalette(std::move(layout)))
    , m_kept(kept)
{
    m_proof.widthPx = widthPx;
    m_proof.layout = m_layout;
    m_proof.isExact = kept != KeptPixels::Size;
    if (kept == KeptPixels::Colors)
        m_row.resize(static_cast<std::size_t>(widthPx) * 4);
}

void ProofMaker::add(const std::uint8_t* row)
{
    ++m_proof.heightPx;
    if (m_kept == KeptPixels::Samples)
        m_hash.addRow(row,
                      static_cast<std::uint64_t>(m_proof.widthPx)
                          * static_cast<unsigned>(m_layout.channels() * m_layout.bitsPerSample));
    else if (m_proof.isExact)
        addColors(row);
}

/// Pixels less than half opaque are transparent, whatever their colour; others lie over white.
void ProofMaker::addColors(const std::uint8_t* row)
{
    const bool isIndexed = hasIndexes(m_layout);
    const int bits = m_layout.bitsPerSample;
    const int channels = m_layout.channels();
    const bool hasAlpha = m_layout.alpha != AlphaKind::None;
    std::uint32_t last = 0;
    for (std::size_t x = 0; x < m_row.size() / 4; ++x) {
        RgbColor color {};
        bool isOpaque = true;
        if (isIndexed) {
            const std::size_t bit = x * static_cast<unsigned>(bits);
            const int index
                = row[bit / 8] >> (8 - bits - static_cast<int>(bit % 8)) & ((1 << bits) - 1);
            color = m_layout.palette.at(static_cast<std::size_t>(index));
        } else {
            const std::uint8_t* pixel = row + x * static_cast<unsigned>(channels);
            const int alpha = hasAlpha ? pixel[channels - 1] : 255;
            isOpaque = alpha >= 128;
            for (std::size_t c = 0; c < color.size(); ++c)
                color[c] = static_cast<std::uint8_t>(
                    (pixel[m_layout.model == ColorModel::Rgb ? c : 0] * alpha + 255 * (255 - alpha)
                     + 127)
                    / 255);
        }
        const std::uint32_t code = !isOpaque ? 1U << 24U
                                             : 2U << 24U | std::uint32_t { color[0] } << 16U
                | std::uint32_t { color[1] } << 8U | color[2];
        if (!isIndexed && code != last && isNewColor(code) && ++m_colorCount > largestPalette) {
            m_proof.isExact = false;
            return;
        }
        last = code;
        for (std::size_t c = 0; c < 4; ++c)
            m_row[4 * x + c] = static_cast<std::uint8_t>(code >> (24 - 8 * c));
    }
    m_hash.add(m_row);
}

bool ProofMaker::isNewColor(std::uint32_t color)
{
    std::size_t place = color * 2654435769U >> 22U;
    while (m_colors.at(place) != 0 && m_colors.at(place) != color)
        place = (place + 1) % m_colors.size();
    return std::exchange(m_colors.at(place), color) == 0;
}

ImageProof ProofMaker::proof() const
{
    ImageProof proof = m_proof;
    proof.pixels = m_hash.digest();
    return proof;
}

ImageProof readProof(RowSource& rows, KeptPixels kept)
{
    ProofMaker maker(rows.widthPx(), rows.layout(), kept);
    for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
        for (int i = 0; i < band.rows; ++i)
            maker.add(band.row(i));
    return maker.proof();
}

std::unique_ptr<RowSource> provedRows(std::unique_ptr<RowSource> rows, KeptPixels kept,
                                      ImageProof& proof)
{
    return std::make_unique<ProvedRows>(std::move(rows), kept, proof);
}

BlockProofMaker::BlockProofMaker(const JpegFrame& frame)
    : m_frame(frame)
{
    m_hash.addNumber(static_cast<std::uint64_t>(frame.colors));
    for (const JpegComponent& component : frame.components) {
        m_hash.addNumber(static_cast<std::uint64_t>(component.horizontal));
        m_hash.addNumber(static_cast<std::uint64_t>(component.vertical));
        for (const std::uint16_t step : component.quantization)
            m_hash.addNumber(step);
    }
}

void BlockProofMaker::add(const JpegUnitRow& row)
{
    for (std::size_t c = 0; c < m_frame.components.size(); ++c) {
        const JpegComponent& component = m_frame.components[c];
        const int rows = std::min(component.vertical,
                                  m_frame.blocksDown(component) - m_units * component.vertical);
        const auto across = static_cast<std::size_t>(m_frame.blocksAcross(component));
        for (int i = 0; i < rows; ++i)
            m_hash.add({ reinterpret_cast<const std::uint8_t*>(row.row(c, i)),
                         across * sizeof(JpegBlock) });
    }
    ++m_units;
}

ImageProof BlockProofMaker::proof() const
{
    ImageProof proof;
    proof.widthPx = m_frame.widthPx;
    proof.heightPx = std::min(m_frame.heightPx, m_units * m_frame.unitHeightPx());
    proof.layout.model = m_frame.model();
    proof.pixels = m_hash.digest();
    return proof;
}

std::shared_ptr<JpegBlocks> provedBlocks(std::shared_ptr<JpegBlocks> blocks, ImageProof& proof)
{
    return std::make_shared<ProvedBlocks>(std::move(blocks), proof);
}

void compareProofs(const ImageProof& written, const ImageProof& found, KeptPixels kept)
{
    if (found.widthPx != written.widthPx || found.heightPx != written.heightPx)
        throw std::runtime_error("it has " + sizeText(found) + " pixels in place of "
                                 + sizeText(written));
    const PixelLayout& is = found.layout;
    const PixelLayout& was = written.layout;
    if (kept != KeptPixels::Colors
        && (is.colorChannels() != was.colorChannels() || is.bitsPerSample != was.bitsPerSample
            || is.alpha != was.alpha))
        throw std::runtime_error("its samples are of another kind");
    const bool hasOtherColors = kept == KeptPixels::Samples && is.palette != was.palette;
    if (hasOtherColors || (written.isExact && found.pixels != written.pixels))
        throw std::runtime_error("its pixels are not those of the page");
}

} // namespace pagestack
