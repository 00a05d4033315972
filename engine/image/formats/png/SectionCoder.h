#pragma once

#include "engine/image/deflate/HuffmanDeflate.h"
#include "engine/image/deflate/MatchDeflate.h"
#include "engine/image/formats/png/RowFilter.h"

#include <memory>

namespace pagestack {

/// Rows of a PNG image that lie one after the other, with the row above them, zeros for the first
/// one, before them.
struct SectionRows
{
    const std::uint8_t* first = nullptr;
    std::size_t count = 0;
    std::size_t rowBytes = 0;

    const std::uint8_t* row(std::size_t index) const { return first + index * rowBytes; }
    const std::uint8_t* above(std::size_t index) const { return row(index) - rowBytes; }
    /// With the byte before each row that names its filter.
    std::size_t filteredBytes() const { return count * (1 + rowBytes); }
};

/// How rows are compressed.
struct SectionPlan
{
    enum class Filtering { None, Up, Best };
    enum class Coding { Runs, FastMatches, Matches };

    Filtering filtering = Filtering::None;
    Coding coding = Coding::Matches;
};

/// Filters and compresses rows. One thread at a time.
class SectionCoder
{
public:
    /// `pixelBytes` as for RowFilter. Below 8 bits a sample, and with a palette, pixels are
    /// `isPacked`: their filters seldom help.
    SectionCoder(std::size_t rowBytes, int pixelBytes, bool isPacked, std::size_t mostRows);

    /// The plan that makes a sample of `rows` smallest, or a fast one that comes close to it.
    SectionPlan choosePlan(const SectionRows& rows);

    /// The filtered rows; they belong to the coder and stay until its next call.
    std::span<const std::uint8_t> filter(SectionPlan::Filtering filtering, const SectionRows& rows);

    /// The most bytes that `compress` touches.
    static std::size_t bound(std::size_t filteredBytes);

    /// As HuffmanDeflate::compress.
    std::size_t compress(SectionPlan::Coding coding, std::span<const std::uint8_t> filtered,
                         bool endsStream, std::uint8_t* out);

private:
    using Filtering = SectionPlan::Filtering;
    using Coding = SectionPlan::Coding;

    void filterSample(Filtering filtering, const SectionRows& rows);
    std::size_t sampleSize(Coding coding);
    std::uint8_t* filterRows(Filtering filtering, const SectionRows& rows, std::uint8_t* out);

    bool m_isPacked;
    RowFilter m_filter;
    HuffmanDeflate m_runs;
    MatchDeflate m_fastMatches;
    MatchDeflate m_matches;
    std::unique_ptr<std::uint8_t[]> m_filtered; ///< room for all rows of a section
    std::size_t m_sampleBytes = 0; ///< at the start of `m_filtered`
    std::vector<std::uint8_t> m_compressedSample;
};

} // namespace pagestack
