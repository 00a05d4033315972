#include "engine/image/formats/png/SectionCoder.h"

#include <algorithm>
#include <limits>

namespace pagestack {

namespace {

    constexpr std::size_t sampleBands = 6;
    // A band holds about as much as a match reaches back.
    constexpr std::size_t sampleBandBytes = std::size_t { 32 } * 1024;
    constexpr std::size_t mostSampleBytes = sampleBands * sampleBandBytes;

    /// `size` in percent of `other`.
    double percentOf(std::size_t size, std::size_t other)
    {
        return 100.0 * static_cast<double>(size) / static_cast<double>(other);
    }

    // A quick match search that gains no more than this has met noise; a thorough one would not
    // help.
    constexpr double noisePercent = 99;
    // Where runs leave less than this of the pixels, there is much to gain, and little to search.
    constexpr double sparsePercent = 20;
    constexpr double sparseNoisePercent = 105;
    // In more than this, one filter is enough to meet noise.
    constexpr std::size_t smallSampleBytes = std::size_t { 64 } * 1024;
    // Filters that come so close in a quick search are tried by a thorough one.
    constexpr double closePercent = 102;
    // Runs are that much faster that they may be a little larger.
    constexpr double toleratedPercent = 102;

} // namespace

SectionCoder::SectionCoder(std::size_t rowBytes, int pixelBytes, bool isPacked,
                           std::size_t mostRows)
    : m_isPacked(isPacked)
    , m_filter(rowBytes, pixelBytes)
    , m_filtered(std::make_unique_for_overwrite<std::uint8_t[]>(mostRows * (1 + rowBytes)))
    , m_compressedSample(bound(mostSampleBytes))
{
}

SectionPlan SectionCoder::choosePlan(const SectionRows& rows)
{
    std::span<const std::uint8_t> sample = filterSample(Kind::Best, rows);
    const std::size_t runs = compressedSize(Coding::Runs, sample);
    const SectionPlan byRuns { Kind::Best, Coding::Runs };
    const double noise
        = percentOf(runs, sample.size()) < sparsePercent ? sparseNoisePercent : noisePercent;
    // The likely one comes first.
    std::array<FilterSize, 3> sizes { { { Kind::Best, 0 }, { Kind::None, 0 }, { Kind::Up, 0 } } };
    if (m_isPacked)
        std::swap(sizes[0], sizes[1]);
    std::size_t least = std::numeric_limits<std::size_t>::max();
    for (FilterSize& size : sizes) {
        if (&size != sizes.data() || size.kind != Kind::Best)
            sample = filterSample(size.kind, rows);
        size.bytes = compressedSize(Coding::QuickMatches, sample);
        least = std::min(least, size.bytes);
        if (percentOf(least, runs) > noise
            && (sample.size() > smallSampleBytes || &size == &sizes.back()))
            return byRuns;
    }
    FilterSize best { Kind::Best, std::numeric_limits<std::size_t>::max() };
    for (const FilterSize& size : sizes) {
        if (percentOf(size.bytes, least) > closePercent)
            continue;
        const std::size_t bytes = compressedSize(Coding::Matches, filterSample(size.kind, rows));
        if (bytes < best.bytes)
            best = { size.kind, bytes };
    }
    return percentOf(runs, best.bytes) <= toleratedPercent ? byRuns : SectionPlan { best.kind };
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
    const auto effort = coding == Coding::QuickMatches ? MatchDeflate::Effort::Quick
                                                       : MatchDeflate::Effort::Usual;
    return m_matches.compress(filtered, effort, endsStream, out);
}

} // namespace pagestack
