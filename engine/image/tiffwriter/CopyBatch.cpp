#include "engine/image/tiffwriter/CopyBatch.h"

#include "engine/files/StagedFile.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/ByteOrder.h"

#include <algorithm>
#include <atomic>
#include <exception>

namespace pagestack {

CopyBatch::CopyBatch(PageSpan pages, int compression, PagePosition first, const RunTogether& run)
    : m_first(first)
    , m_run(run)
    , m_parts(std::min(pages.size(), mostPages))
{
    forEach([&](std::size_t index) {
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
    std::atomic<bool> isWhole = true;
    forEach([&](std::size_t index) {
        try {
            copyPart(index, file);
        } catch (const std::exception&) {
            isWhole = false;
        }
    });
    return isWhole;
}

void CopyBatch::copyPart(std::size_t index, const StagedFile& file) const
{
    const Part& part = m_parts[index];
    CopiedDirectory directory
        = copiedDirectory(*part.page, *part.source, positionOf(index), part.begin);
    if (index + 1 < m_parts.size())
        putNumber(std::span(directory.bytes).subspan(directory.linkAt - directory.offset, 4),
                  m_parts[index + 1].directoryAt(), false);
    const std::span<std::uint8_t> buffer = copyBuffer();
    std::uint64_t at = part.begin;
    std::size_t rest = readStrips(*part.page, part.source->document(), buffer, [&](auto bytes) {
        file.fill(at, bytes);
        at += bytes.size();
    });
    const std::size_t gap = directory.offset - at - rest;
    if (rest + gap + directory.bytes.size() > buffer.size()) {
        file.fill(at, buffer.first(rest));
        file.fill(directory.offset, directory.bytes);
        return;
    }
    std::ranges::fill(buffer.subspan(rest, gap), std::uint8_t { 0 });
    rest += gap;
    std::ranges::copy(directory.bytes, buffer.begin() + static_cast<std::ptrdiff_t>(rest));
    file.fill(at, buffer.first(rest + directory.bytes.size()));
}

/// Side by side where there is enough to do.
void CopyBatch::forEach(const std::function<void(std::size_t index)>& work) const
{
    constexpr std::size_t partsAThread = 2;
    std::atomic<std::size_t> next = 0;
    m_run(static_cast<int>((m_parts.size() + partsAThread - 1) / partsAThread), [&] {
        for (std::size_t index = next++; index < m_parts.size(); index = next++)
            work(index);
    });
}

} // namespace pagestack
