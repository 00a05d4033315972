#include "engine/image/tiff/MappedTiffCopy.h"

#include "engine/files/PosixFile.h"
#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/TiffReader.h"
#include "engine/threads/StopScope.h"

#include <QScopeGuard>

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::uint64_t copyBytes = std::uint64_t { 1024 } * 1024;
    constexpr std::uint64_t copiedHeaderBytes = 8; // of BigTIFF, all but the offset

    /// Where libtiff reads of the page: the header, the directory, the values of its tags, the
    /// strips.
    std::vector<FileRange> rangesOf(TiffReader& reader, int index)
    {
        const TiffDirectory& directory = reader.directory(index);
        const std::uint64_t size = reader.document().sizeBytes();
        std::vector<FileRange> ranges { { 0, copiedHeaderBytes } };
        const auto add = [&](std::uint64_t offset, std::uint64_t bytes) {
            if (offset < size)
                ranges.push_back({ offset, offset + std::min(bytes, size - offset) });
        };
        add(directory.range.begin, directory.range.end - directory.range.begin);
        for (const TiffTagValue& value : directory.values)
            add(value.offset, value.bytes);
        tiff* page = reader.load(index);
        const std::uint32_t strips = TIFFNumberOfStrips(page);
        for (std::uint32_t strip = 0; strip < strips; ++strip)
            add(TIFFGetStrileOffset(page, strip), TIFFGetStrileByteCount(page, strip));
        return ranges;
    }

    /// Copies the ranges, which may share bytes, to where they lie in the file.
    void copyRanges(const OpenTiffFile& from, std::vector<FileRange> ranges, int to)
    {
        std::ranges::sort(ranges, {}, &FileRange::begin);
        std::vector<std::uint8_t> buffer;
        std::uint64_t done = 0;
        for (const FileRange& range : ranges)
            for (done = std::max(done, range.begin); done < range.end; done += buffer.size()) {
                StopScope::leavePageIfStopped();
                buffer.resize(std::min(copyBytes, range.end - done));
                from.readAt(done, buffer);
                writeFully(to, done, buffer);
            }
    }

    /// Makes the page the only one of the chain, which libtiff walks: the others are not copied.
    void leaveAlone(const TiffFormat& format, const FileRange& directory, int copy)
    {
        std::array<std::uint8_t, 8> bytes = {};
        const std::span link = std::span(bytes).first(format.offsetBytes());
        writeFully(copy, directory.end - link.size(), link);
        putNumber(link, directory.begin, format.isBigEndian);
        writeFully(copy, format.firstLinkAt(), link);
    }

} // namespace

void Unmapper::operator()(std::uint8_t* bytes) const noexcept { ::munmap(bytes, size); }

MappedTiffCopy::MappedTiffCopy(TiffReader& reader, int index)
{
    const OpenTiffFile& document = reader.document();
    const FileRange directory = reader.directory(index).range;
    const int copy = openUnnamedFile();
    const auto closeCopy = qScopeGuard([copy] { ::close(copy); });
    copyRanges(document, rangesOf(reader, index), copy);
    leaveAlone(document.chain().format, directory, copy);
    const std::uint64_t size = document.sizeBytes();
    // A directory may end with the file, before the offset of the next.
    if (::ftruncate(copy, static_cast<off_t>(size)) != 0)
        throwFileSystemError("cannot make the temporary file", errno);
    void* bytes = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, copy, 0);
    if (bytes == MAP_FAILED)
        throwFileSystemError("cannot map the temporary file", errno);
    // The mapping keeps the bytes when the descriptor is closed.
    m_mapping = { static_cast<std::uint8_t*>(bytes), Unmapper { size } };
    TiffMessages& messages = reader.messages();
    m_handle = openTiff(*this, "r", messages);
    if (TIFFSetSubDirectory(handle(), directory.begin) == 0)
        messages.fail("the directory of the page cannot be read");
    messages.forget();
}

std::size_t MappedTiffCopy::read(std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    const auto left = mapping().subspan(std::min(offset, sizeBytes()));
    const std::size_t count = std::min(bytes.size(), left.size());
    std::copy_n(left.begin(), count, bytes.begin());
    return count;
}

void MappedTiffCopy::dropPages()
{
    // Advice only: that it is not taken costs memory, nothing else.
    static_cast<void>(::madvise(m_mapping.get(), sizeBytes(), MADV_DONTNEED));
}

} // namespace pagestack
