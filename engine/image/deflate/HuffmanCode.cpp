#include "engine/image/deflate/HuffmanCode.h"

#include <algorithm>

namespace pagestack {

namespace {

    constexpr std::size_t mostSymbols = 288;
    constexpr int longestWord = 15;

    struct Leaf
    {
        std::uint32_t count = 0;
        std::uint16_t symbol = 0;
    };

    /// Leaves by rising count, and how deep each of them lies in the tree.
    struct CodeTree
    {
        std::array<Leaf, mostSymbols> leaves;
        std::array<std::uint8_t, mostSymbols> depths {};
        std::size_t size = 0;
    };

    /// Joins the two rarest nodes until one is left; those that are joined come out by rising
    /// count, so two queues do for a heap. Returns the depth of the deepest leaf.
    int buildTree(CodeTree& tree)
    {
        const std::size_t leaves = tree.size;
        const std::size_t nodes = 2 * leaves - 1;
        std::array<std::uint32_t, 2 * mostSymbols> counts {};
        std::array<std::uint16_t, 2 * mostSymbols> parents {};
        for (std::size_t i = 0; i < leaves; ++i)
            counts[i] = tree.leaves[i].count;
        std::size_t nextLeaf = 0;
        std::size_t nextJoined = leaves;
        for (std::size_t joined = leaves; joined < nodes; ++joined) {
            counts[joined] = 0;
            for (int child = 0; child < 2; ++child) {
                const bool takesLeaf = nextLeaf < leaves
                    && (nextJoined >= joined || counts[nextLeaf] <= counts[nextJoined]);
                const std::size_t taken = takesLeaf ? nextLeaf++ : nextJoined++;
                counts[joined] += counts[taken];
                parents[taken] = static_cast<std::uint16_t>(joined);
            }
        }
        std::array<std::uint16_t, 2 * mostSymbols> depths {};
        depths[nodes - 1] = 0;
        for (std::size_t i = nodes - 1; i-- > 0;)
            depths[i] = static_cast<std::uint16_t>(depths[parents[i]] + 1);
        for (std::size_t i = 0; i < leaves; ++i)
            tree.depths[i] = static_cast<std::uint8_t>(depths[i]);
        return tree.depths[0];
    }

} // namespace

void makeCodeLengths(std::span<const std::uint32_t> counts, int longest,
                     std::span<std::uint8_t> lengths)
{
    CodeTree tree;
    for (std::size_t symbol = 0; symbol < counts.size(); ++symbol)
        if (counts[symbol] != 0)
            tree.leaves[tree.size++] = { counts[symbol], static_cast<std::uint16_t>(symbol) };
    for (std::size_t symbol = 0; tree.size < 2; ++symbol)
        if (counts[symbol] == 0)
            tree.leaves[tree.size++] = { 1, static_cast<std::uint16_t>(symbol) };
    const auto end = tree.leaves.begin() + static_cast<std::ptrdiff_t>(tree.size);
    std::sort(tree.leaves.begin(), end, [](const Leaf& one, const Leaf& other) {
        return one.count != other.count ? one.count < other.count : one.symbol < other.symbol;
    });
    // Counts that lie closer together give a flatter tree. This is rare and costs little size.
    while (buildTree(tree) > longest)
        for (std::size_t i = 0; i < tree.size; ++i)
            tree.leaves[i].count = tree.leaves[i].count / 2 + 1;
    std::fill(lengths.begin(), lengths.end(), std::uint8_t { 0 });
    for (std::size_t i = 0; i < tree.size; ++i)
        lengths[tree.leaves[i].symbol] = tree.depths[i];
}

void makeCodeWords(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> words)
{
    std::array<unsigned, longestWord + 2> next {};
    for (const std::uint8_t length : lengths)
        ++next[length + 1U];
    next[1] = 0; // symbols without a code
    for (std::size_t length = 1; length <= longestWord; ++length)
        next[length] = (next[length - 1] + next[length]) << 1U;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        unsigned word = next[lengths[symbol]]++;
        unsigned reversed = 0;
        for (int bit = 0; bit < lengths[symbol]; ++bit, word >>= 1U)
            reversed = reversed << 1U | (word & 1U);
        words[symbol] = static_cast<std::uint16_t>(reversed);
    }
}

} // namespace pagestack
