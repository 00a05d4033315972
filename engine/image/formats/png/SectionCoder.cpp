#include "engine/image/formats/png/SectionCoder.h"

#include <algorithm>
#include <limits>

namespace pagestack {

namespace {

    constexpr int fastLevel = 1;
    // The levels above take four times as long for four in a hundred of the size.
    constexpr int usualLevel = 6;
    constexpr std::size_t sampleBands = 6;
    // A band holds about as much as a match reaches back.
    constexpr std::size_t sampleBandBytes = std::size_t { 32 } * 1024;
    constexpr std::size_t mostSampleBytes = sampleBands * sampleBandBytes;

    /// `size` in percent of `other`.
    double percentOf(std::size_t size, std::size_t other)
    {
        return 100.0 * static_cast<double>(size) / static_cast<double>(other);
    }

    // A fast match search that does worse than this has met noise; a thorough one would not help.
    constexpr double noisePercent = 108;
    // Runs are that much faster that they may be a little larger.
    constexpr double toleratedPercent = 102;

} // namespace

SectionCoder::SectionCoder(std::size_t rowBytes, int pixelBytes, bool isPacked,
                           std::size_t mostRows)
    : m_isPacked(isPacked)
    , m_filter(rowBytes, pixelBytes)
    , m_fastMatches(fastLevel)
    , m_matches(usualLevel)
    , m_filtered(std::make_unique_for_overwrite<std::uint8_t[]>(mostRows * (1 + rowBytes)))
    , m_compressedSample(bound(mostSampleBytes))
{
}

SectionPlan SectionCoder::choosePlan(const SectionRows& rows)
{
    filterSample(Filtering::Best, rows);
    const std::size_t runs = sampleSize(Coding::Runs);
    if (m_isPacked)
        filterSample(Filtering::None, rows);
    if (percentOf(sampleSize(Coding::FastMatches), runs) > noisePercent)
        return { Filtering::Best, Coding::Runs };
    SectionPlan best;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const Filtering filtering : { Filtering::None, Filtering::Up, Filtering::Best }) {
        filterSample(filtering, rows);
        const std::size_t size = sampleSize(Coding::Matches);
        if (size < least) {
            least = size;
            best.filtering = filtering;
        }
    }
    return percentOf(runs, least) <= toleratedPercent
        ? SectionPlan { Filtering::Best, Coding::Runs }
        : best;
}

void SectionCoder::filterSample(Filtering filtering, const SectionRows& rows)
{
    std::uint8_t* end = m_filtered.get();
    if (rows.filteredBytes() <= mostSampleBytes || rows.count < sampleBands) {
        end = filterRows(filtering, rows, end);
    } else {
        SectionRows band = rows;
        band.count = std::clamp<std::size_t>(sampleBandBytes / (1 + rows.rowBytes), 1,
                                             rows.count / sampleBands);
        // From the middle of each part of the section.
        for (std::size_t i = 0; i < sampleBands; ++i) {
            const std::size_t middle = rows.count * (2 * i + 1) / (2 * sampleBands);
            band.first = rows.row(middle - band.count / 2);
            end = filterRows(filtering, band, end);
        }
    }
    m_sampleBytes = std::min(static_cast<std::size_t>(end - m_filtered.get()), mostSampleBytes);
}

std::size_t SectionCoder::sampleSize(Coding coding)
{
    return compress(coding, { m_filtered.get(), m_sampleBytes }, true, m_compressedSample.data());
}

std::span<const std::uint8_t> SectionCoder::filter(Filtering filtering, const SectionRows& rows)
{
    filterRows(filtering, rows, m_filtered.get());
    return { m_filtered.get(), rows.filteredBytes() };
}

std::uint8_t* SectionCoder::filterRows(Filtering filtering, const SectionRows& rows,
                                       std::uint8_t* out)
{
    for (std::size_t i = 0; i < rows.count; ++i, out += 1 + rows.rowBytes)
        switch (filtering) {
        case Filtering::None:
            m_filter.apply(RowFilter::Kind::None, rows.row(i), rows.above(i), out);
            break;
        case Filtering::Up:
            m_filter.apply(RowFilter::Kind::Up, rows.row(i), rows.above(i), out);
            break;
        case Filtering::Best:
            m_filter.applyBest(rows.row(i), rows.above(i), out);
            break;
        }
    return out;
}

std::size_t SectionCoder::bound(std::size_t filteredBytes)
{
    return std::max(HuffmanDeflate::bound(filteredBytes), MatchDeflate::bound(filteredBytes));
}

std::size_t SectionCoder::compress(Coding coding, std::span<const std::uint8_t> filtered,
                                   bool endsStream, std::uint8_t* out)
{
    switch (coding) {
    case Coding::Runs:
        return m_runs.compress(filtered, endsStream, out);
    case Coding::FastMatches:
        return m_fastMatches.compress(filtered, endsStream, out);
    case Coding::Matches:
        break;
    }
    return m_matches.compress(filtered, endsStream, out);
}

} // namespace pagestack
