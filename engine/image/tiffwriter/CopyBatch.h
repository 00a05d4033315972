#pragma once

#include "engine/image/tiffwriter/CopiedPage.h"
#include "engine/threads/RunTogether.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace pagestack {

class StagedFile;

using PageSpan = std::span<const std::shared_ptr<const PageSource>>;

/// Pages in succession that are copied to a classic TIFF file side by side: who makes the file
/// gives each its place, other threads read and write it there.
class CopyBatch
{
public:
    /// No more than these are copied at once.
    static constexpr std::size_t mostPages = 64;
    static constexpr std::uint64_t mostBytes = std::uint64_t { 32 } * 1024 * 1024;

    /// Reads the directories of `pages`, all of one file, and takes those up to the first that is
    /// not to be copied; `first` is the position of the first one. All are borrowed.
    CopyBatch(PageSpan pages, int compression, PagePosition first, const RunTogether& run);

    /// Gives each page its place from `begin` on; those behind `limitBytes` are left out, and those
    /// beyond `mostBytes`, but for one. Returns where the last one ends.
    std::uint64_t place(std::uint64_t begin, std::uint64_t limitBytes);

    std::size_t count() const { return m_parts.size(); }

    /// The place of a page in the file.
    struct Place
    {
        std::uint64_t directoryAt = 0;
        std::uint64_t linkAt = 0; ///< where the offset of the next directory has to be written
        std::uint64_t end = 0;
        std::optional<std::uint64_t> pageNumberAt; ///< where the value of PageNumber lies
    };
    std::vector<Place> places() const;

    /// Writes the pages into the room that `file` has for them. False when one could not be read or
    /// written; the room then holds anything.
    bool copyTo(const StagedFile& file) const;

private:
    struct Part
    {
        const TiffPage* source = nullptr;
        std::optional<CopiedPage> page;
        std::uint64_t begin = 0; ///< of its pieces
        CopiedDirectory directory; ///< as it would be at the begin of a file

        std::uint64_t directoryAt() const { return directoryBehind(*page, begin); }
    };
    PagePosition positionOf(std::size_t index) const;
    /// Pieces in succession of a part, with its directory if they are its last ones.
    struct Slice
    {
        std::size_t part = 0;
        std::span<const PlainDirectory::Piece> pieces;
        std::uint64_t begin = 0; ///< where they go
        bool isLast = false;
    };
    std::vector<Slice> slices() const;
    void copySlice(const Slice& slice, const StagedFile& file) const;
    std::vector<std::uint8_t> directoryOf(std::size_t index) const;
    void forEach(std::size_t count, const std::function<void(std::size_t index)>& work) const;

    PagePosition m_first;
    const RunTogether& m_run;
    std::vector<Part> m_parts;
};

} // namespace pagestack
