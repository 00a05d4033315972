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
    std::span<const std::uint8_t> sample = filterSample(Kind::Best, rows);
    const std::size_t runs = compressedSize(Coding::Runs, sample);
    if (m_isPacked)
        sample = filterSample(Kind::None, rows);
    if (percentOf(compressedSize(Coding::FastMatches, sample), runs) > noisePercent)
        return { Kind::Best, Coding::Runs };
    SectionPlan best;
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (const Kind kind : { Kind::None, Kind::Up, Kind::Best }) {
        const std::size_t size = compressedSize(Coding::Matches, filterSample(kind, rows));
        if (size < least) {
            least = size;
            best.filter = kind;
        }
    }
    return percentOf(runs, least) <= toleratedPercent ? SectionPlan { Kind::Best, Coding::Runs }
                                                      : best;
}

std::span<const std::uint8_t> SectionCoder::filterSample(Kind kind, const SectionRows& rows)
{
    if (rows.filteredBytes() <= mostSampleBytes || rows.count < sampleBands)
        return filter(kind, rows).first(std::min(rows.filteredBytes(), mostSampleBytes));
    SectionRows band = rows;
    band.count = std::clamp<std::size_t>(sampleBandBytes / (1 + rows.rowBytes), 1,
                                         rows.count / sampleBands);
    std::uint8_t* end = m_filtered.get();
    for (std::size_t i = 0; i < sampleBands; ++i) { // from the middle of each part of the section
        const std::size_t middle = rows.count * (2 * i + 1) / (2 * sampleBands);
        band.first = rows.row(middle - band.count / 2);
        end = filterTo(end, kind, band);
    }
    return { m_filtered.get(), std::min(sampleBands * band.filteredBytes(), mostSampleBytes) };
}

std::size_t SectionCoder::compressedSize(Coding coding, std::span<const std::uint8_t> sample)
{
    return compress(coding, sample, true, m_compressedSample.data());
}

std::span<const std::uint8_t> SectionCoder::filter(Kind kind, const SectionRows& rows)
{
    filterTo(m_filtered.get(), kind, rows);
    return { m_filtered.get(), rows.filteredBytes() };
}

/// Returns the end of the filtered rows.
std::uint8_t* SectionCoder::filterTo(std::uint8_t* out, Kind kind, const SectionRows& rows)
{
    for (std::size_t i = 0; i < rows.count; ++i, out += 1 + rows.rowBytes)
        m_filter.apply(kind, rows.row(i), rows.row(i) - rows.rowBytes, out);
    return out;
}

std::size_t SectionCoder::bound(std::size_t filteredBytes)
{
    return std::max(HuffmanDeflate::bound(filteredBytes), MatchDeflate::bound(filteredBytes));
}

std::size_t SectionCoder::compress(Coding coding, std::span<const std::uint8_t> filtered,
                                   bool endsStream, std::uint8_t* out)
{
    if (coding == Coding::Runs)
        return m_runs.compress(filtered, endsStream, out);
    MatchDeflate& matches = coding == Coding::FastMatches ? m_fastMatches : m_matches;
    return matches.compress(filtered, endsStream, out);
}

} // namespace pagestack
