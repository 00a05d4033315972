#pragma once

#include "engine/image/deflate/HuffmanDeflate.h"
#include "engine/image/deflate/MatchDeflate.h"
#include "engine/image/formats/png/RowFilter.h"

#include <memory>

namespace pagestack {

/// Consecutive rows of a PNG image. The row above them, or zeros, lies before them.
struct SectionRows
{
    const std::uint8_t* first = nullptr;
    std::size_t count = 0;
    std::size_t rowBytes = 0;

    const std::uint8_t* row(std::size_t index) const { return first + index * rowBytes; }
    /// With the byte before each row that names its filter.
    std::size_t filteredBytes() const { return count * (1 + rowBytes); }
};

/// How rows are compressed.
struct SectionPlan
{
    enum class Coding { Runs, QuickMatches, Matches };

    RowFilter::Kind filter = RowFilter::Kind::None;
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

    /// Filters the rows. The result belongs to the coder and stays until its next call.
    std::span<const std::uint8_t> filter(RowFilter::Kind kind, const SectionRows& rows);

    /// The most bytes that `compress` touches.
    static std::size_t bound(std::size_t filteredBytes);

    /// As HuffmanDeflate::compress.
    std::size_t compress(SectionPlan::Coding coding, std::span<const std::uint8_t> filtered,
                         bool endsStream, std::uint8_t* out);

private:
    using Coding = SectionPlan::Coding;
    using Kind = RowFilter::Kind;

    struct FilterSize
    {
        Kind kind = Kind::None;
        std::size_t bytes = 0; ///< of a sample, compressed behind that filter
    };

    std::span<const std::uint8_t> filterSample(Kind kind, const SectionRows& rows);
    std::size_t compressedSize(Coding coding, std::span<const std::uint8_t> sample);
    std::uint8_t* filterTo(std::uint8_t* out, Kind kind, const SectionRows& rows);

    bool m_isPacked;
    RowFilter m_filter;
    HuffmanDeflate m_runs;
    MatchDeflate m_matches;
    std::unique_ptr<std::uint8_t[]> m_filtered; ///< room for all rows of a section
    std::vector<std::uint8_t> m_compressedSample;
};

} // namespace pagestack
