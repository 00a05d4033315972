#include "engine/image/formats/png/RowFilter.h"

#include <algorithm>
#include <cstring>

namespace pagestack {

namespace {

    // All of this stays within bytes, so that a vector instruction takes as many of them as it can.

    std::uint8_t distance(std::uint8_t one, std::uint8_t other)
    {
        return static_cast<std::uint8_t>(std::max(one, other) - std::min(one, other));
    }

    struct Neighbours
    {
        std::uint8_t left;
        std::uint8_t above;
        std::uint8_t aboveLeft;
    };

    std::uint8_t average(Neighbours at)
    {
        return static_cast<std::uint8_t>((at.left & at.above) + ((at.left ^ at.above) >> 1));
    }

    /// The neighbour that is nearest to left + above - aboveLeft. That sum is as far from `left` as
    /// `above` is from `aboveLeft` and the other way round, and from `aboveLeft` as far as both
    /// together where they lie on the same side of it, else as far as they differ.
    [[gnu::always_inline]] inline std::uint8_t paeth(Neighbours at)
    {
        const std::uint8_t toLeft = distance(at.above, at.aboveLeft);
        const std::uint8_t toAbove = distance(at.left, at.aboveLeft);
        const std::uint8_t difference = distance(toLeft, toAbove);
        const std::uint8_t nearer = std::min(toLeft, toAbove);
        const std::uint8_t nearest = toLeft <= toAbove ? at.left : at.above;
        // Masks: conditions joined by && and || would be branches.
        const auto isLeftBelow = static_cast<std::uint8_t>(at.left < at.aboveLeft ? 255 : 0);
        const auto isAboveBelow = static_cast<std::uint8_t>(at.above < at.aboveLeft ? 255 : 0);
        const auto isBeyond = static_cast<std::uint8_t>(nearer > difference ? 255 : 0);
        const auto takesAboveLeft
            = static_cast<std::uint8_t>((isLeftBelow ^ isAboveBelow) & isBeyond);
        return static_cast<std::uint8_t>((at.aboveLeft & takesAboveLeft)
                                         | (nearest & ~takesAboveLeft));
    }

    std::uint64_t absoluteSum(const std::uint8_t* bytes, std::size_t count)
    {
        std::uint64_t sum = 0;
        while (count > 0) {
            // A 32-bit sum vectorises and holds this many.
            const std::size_t part = std::min<std::size_t>(count, 1U << 20U);
            std::uint32_t partSum = 0;
            for (std::size_t i = 0; i < part; ++i)
                partSum += std::min(bytes[i], static_cast<std::uint8_t>(-bytes[i]));
            sum += partSum;
            bytes += part;
            count -= part;
        }
        return sum;
    }

    template <typename Prediction>
    void subtract(const std::uint8_t* __restrict row, const std::uint8_t* __restrict above,
                  std::uint8_t* __restrict out, std::size_t pixelBytes, std::size_t rowBytes,
                  Prediction prediction)
    {
        const std::size_t head = std::min(pixelBytes, rowBytes);
        for (std::size_t i = 0; i < head; ++i)
            out[i] = static_cast<std::uint8_t>(row[i] - prediction(Neighbours { 0, above[i], 0 }));
        for (std::size_t i = head; i < rowBytes; ++i) {
            const Neighbours at { row[i - pixelBytes], above[i], above[i - pixelBytes] };
            out[i] = static_cast<std::uint8_t>(row[i] - prediction(at));
        }
    }

} // namespace

RowFilter::RowFilter(std::size_t rowBytes, int pixelBytes)
    : m_rowBytes(rowBytes)
    , m_pixelBytes(static_cast<std::size_t>(pixelBytes))
    , m_best(rowBytes)
    , m_tried(rowBytes)
{
}

std::uint64_t RowFilter::filter(Kind kind, const std::uint8_t* row, const std::uint8_t* above,
                                std::uint8_t* out) const
{
    const auto run
        = [&](auto prediction) { subtract(row, above, out, m_pixelBytes, m_rowBytes, prediction); };
    switch (kind) {
    case Kind::None:
    case Kind::Best:
        std::memcpy(out, row, m_rowBytes);
        break;
    case Kind::Sub:
        run([](Neighbours at) { return at.left; });
        break;
    case Kind::Up:
        run([](Neighbours at) { return at.above; });
        break;
    case Kind::Average:
        run([](Neighbours at) { return average(at); });
        break;
    case Kind::Paeth:
        run([](Neighbours at) { return paeth(at); });
        break;
    }
    return absoluteSum(out, m_rowBytes);
}

void RowFilter::apply(Kind kind, const std::uint8_t* row, const std::uint8_t* above,
                      std::uint8_t* out)
{
    if (kind == Kind::Best) {
        applyBest(row, above, out);
        return;
    }
    *out = static_cast<std::uint8_t>(kind);
    filter(kind, row, above, out + 1);
}

void RowFilter::applyBest(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* out)
{
    std::uint64_t leastSum = absoluteSum(row, m_rowBytes);
    Kind best = Kind::None;
    for (const Kind kind : { Kind::Sub, Kind::Up, Kind::Average, Kind::Paeth }) {
        const std::uint64_t sum = filter(kind, row, above, m_tried.data());
        if (sum < leastSum) {
            leastSum = sum;
            best = kind;
            m_best.swap(m_tried);
        }
    }
    *out = static_cast<std::uint8_t>(best);
    std::memcpy(out + 1, best == Kind::None ? row : m_best.data(), m_rowBytes);
}

} // namespace pagestack
