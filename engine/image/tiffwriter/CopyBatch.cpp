#include "engine/image/tiffwriter/CopyBatch.h"

#include "engine/files/StagedFile.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/ByteOrder.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <utility>

namespace pagestack {

namespace {

    /// The system lets one thread at a time write to a file, while others spin, and what else there
    /// is to do takes less time than to wake more threads.
    constexpr std::size_t mostThreads = 3;

} // namespace

CopyBatch::CopyBatch(PageSpan pages, int compression, PagePosition first, const RunTogether& run)
    : m_first(first)
    , m_run(run)
    , m_parts(std::min(pages.size(), mostPages))
{
    forEach(m_parts.size(), [&](std::size_t index) {
        Part& part = m_parts[index];
        part.source = pages[index]->tiffPage();
        try {
            part.page = copiedPage(*pages[index], compression);
            if (part.page) // for its size, which is the same everywhere
                part.directory = copiedDirectory(*part.page, *part.source, positionOf(index), 0);
        } catch (const std::exception&) {
            part.page.reset();
        }
    });
    const auto end = std::ranges::find_if(m_parts, [](const Part& part) { return !part.page; });
    m_parts.erase(end, m_parts.end());
}

PagePosition CopyBatch::positionOf(std::size_t index) const
{
    return { m_first.index + static_cast<int>(index), m_first.total };
}

std::uint64_t CopyBatch::place(std::uint64_t begin, std::uint64_t limitBytes)
{
    std::uint64_t at = begin;
    for (std::size_t index = 0; index < m_parts.size(); ++index) {
        Part& part = m_parts[index];
        part.begin = at;
        const std::uint64_t end = part.directoryAt() + part.directory.bytes.size();
        if (end > limitBytes || (index > 0 && end - begin > mostBytes)) {
            m_parts.erase(m_parts.begin() + static_cast<std::ptrdiff_t>(index), m_parts.end());
            break;
        }
        at = end;
    }
    return at;
}

std::vector<CopyBatch::Place> CopyBatch::places() const
{
    std::vector<Place> all;
    for (const Part& part : m_parts) {
        const CopiedDirectory& directory = part.directory;
        const std::uint64_t at = part.directoryAt();
        Place place { at, at + directory.linkAt - directory.offset, at + directory.bytes.size(),
                      directory.pageNumberAt };
        if (place.pageNumberAt)
            *place.pageNumberAt += at - directory.offset;
        all.push_back(place);
    }
    return all;
}

bool CopyBatch::copyTo(const StagedFile& file) const
{
    const std::vector<Slice> all = slices();
    std::atomic<bool> isWhole = true;
    forEach(all.size(), [&](std::size_t index) {
        try {
            copySlice(all[index], file);
        } catch (const std::exception&) {
            isWhole = false;
        }
    });
    return isWhole;
}

/// So that several threads have something of a large page.
std::vector<CopyBatch::Slice> CopyBatch::slices() const
{
    constexpr std::uint64_t bytesASlice = std::uint64_t { 1024 } * 1024;
    std::vector<Slice> all;
    for (std::size_t index = 0; index < m_parts.size(); ++index) {
        const std::span<const PlainDirectory::Piece> pieces = m_parts[index].page->read.pieces;
        std::uint64_t at = m_parts[index].begin;
        std::uint64_t bytes = 0;
        for (std::size_t first = 0, end = 1; end <= pieces.size(); ++end) {
            bytes += pieces[end - 1].bytes;
            const bool isLast = end == pieces.size();
            if (bytes < bytesASlice && !isLast)
                continue;
            all.push_back({ index, pieces.subspan(first, end - first), at, isLast });
            at += std::exchange(bytes, 0);
            first = end;
        }
    }
    return all;
}

void CopyBatch::copySlice(const Slice& slice, const StagedFile& file) const
{
    const std::span<std::uint8_t> buffer = copyBuffer();
    std::uint64_t at = slice.begin;
    std::size_t rest
        = readPieces(slice.pieces, m_parts[slice.part].source->document(), buffer, [&](auto bytes) {
              file.fill(at, bytes);
              at += bytes.size();
          });
    if (!slice.isLast)
        return file.fill(at, buffer.first(rest));
    const std::vector<std::uint8_t> directory = directoryOf(slice.part);
    const std::uint64_t directoryAt = m_parts[slice.part].directoryAt();
    const std::size_t gap = directoryAt - at - rest;
    if (rest + gap + directory.size() > buffer.size()) {
        file.fill(at, buffer.first(rest));
        return file.fill(directoryAt, directory);
    }
    std::ranges::fill(buffer.subspan(rest, gap), std::uint8_t { 0 });
    rest += gap;
    std::ranges::copy(directory, buffer.begin() + static_cast<std::ptrdiff_t>(rest));
    file.fill(at, buffer.first(rest + directory.size()));
}

/// In its place, with the offset of the next one.
std::vector<std::uint8_t> CopyBatch::directoryOf(std::size_t index) const
{
    const Part& part = m_parts[index];
    CopiedDirectory directory
        = copiedDirectory(*part.page, *part.source, positionOf(index), part.begin);
    if (index + 1 < m_parts.size())
        putNumber(std::span(directory.bytes).subspan(directory.linkAt - directory.offset, 4),
                  m_parts[index + 1].directoryAt(), false);
    return std::move(directory.bytes);
}

/// Side by side where there is enough to do.
void CopyBatch::forEach(std::size_t count, const std::function<void(std::size_t index)>& work) const
{
    constexpr std::size_t partsAThread = 2;
    const std::size_t threads = std::min((count + partsAThread - 1) / partsAThread, mostThreads);
    std::atomic<std::size_t> next = 0;
    m_run(static_cast<int>(threads), [&] {
        for (std::size_t index = next++; index < count; index = next++)
            work(index);
    });
}

} // namespace pagestack
