#include "engine/image/tiff/MappedTiffCopy.h"

#include "engine/files/PosixFile.h"
#include "engine/image/tiff/TiffFile.h"

#include <QScopeGuard>

#include <tiffio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::uint64_t copyBytes = std::uint64_t { 1024 } * 1024;
    constexpr std::uint64_t headerBytes = 8; // of BigTIFF, all but the offset

    /// Where libtiff reads of the page: the header, the directory, the values of its tags, the
    /// strips.
    std::vector<FileRange> rangesOf(TiffFile& file, int index)
    {
        const TiffDirectory directory = file.directory(index);
        std::vector<FileRange> ranges { { 0, headerBytes } };
        const auto add
            = [&ranges, size = file.sizeBytes()](std::uint64_t offset, std::uint64_t bytes) {
                  if (offset < size)
                      ranges.push_back({ offset, offset + std::min(bytes, size - offset) });
              };
        add(directory.range.begin, directory.range.end - directory.range.begin);
        for (const TiffTagValue& value : directory.values)
            add(value.offset, value.bytes);
        tiff* page = file.describe(index);
        const std::uint32_t strips = TIFFNumberOfStrips(page);
        for (std::uint32_t strip = 0; strip < strips; ++strip)
            add(TIFFGetStrileOffset(page, strip), TIFFGetStrileByteCount(page, strip));
        return ranges;
    }

    /// Copies the ranges, which may share bytes, to where they lie in the file.
    void copyRanges(const TiffFile& from, std::vector<FileRange> ranges, int to)
    {
        std::sort(ranges.begin(), ranges.end(),
                  [](const FileRange& a, const FileRange& b) { return a.begin < b.begin; });
        std::vector<std::uint8_t> buffer;
        std::uint64_t done = 0;
        for (const FileRange& range : ranges)
            for (done = std::max(done, range.begin); done < range.end; done += buffer.size()) {
                buffer.resize(std::min(copyBytes, range.end - done));
                from.readAt(done, buffer);
                writeFully(to, done, buffer);
            }
    }

    /// Writes an offset of a directory as the file has it.
    void putOffset(int to, std::uint64_t at, const TiffDirectoryChain& chain, std::uint64_t offset)
    {
        std::vector<std::uint8_t> bytes(chain.isBigTiff ? 8 : 4);
        for (std::size_t i = 0; i < bytes.size(); ++i, offset >>= 8U)
            bytes[chain.isBigEndian ? bytes.size() - 1 - i : i] = static_cast<std::uint8_t>(offset);
        writeFully(to, at, bytes);
    }

    /// libtiff walks the chain, which is that of one page here: the others are not copied.
    void leaveAlone(const TiffFile& file, int index, int copy)
    {
        const TiffDirectoryChain& chain = file.chain();
        const FileRange directory = file.directory(index).range;
        putOffset(copy, chain.isBigTiff ? 8 : 4, chain, directory.begin);
        putOffset(copy, directory.end - (chain.isBigTiff ? 8 : 4), chain, 0);
    }

    /// What libtiff calls for a handle on a mapping. The mapping belongs to the MappedTiffCopy.
    struct Mapped
    {
        const std::uint8_t* bytes;
        std::uint64_t size;
        std::uint64_t position = 0;
    };

    tmsize_t readMapped(thandle_t stream, void* buffer, tmsize_t size)
    {
        auto* mapped = static_cast<Mapped*>(stream);
        const std::uint64_t left = mapped->size - std::min(mapped->position, mapped->size);
        const auto count = std::min(left, static_cast<std::uint64_t>(size));
        std::memcpy(buffer, mapped->bytes + mapped->position, count);
        mapped->position += count;
        return static_cast<tmsize_t>(count);
    }

    tmsize_t refuseWriting(thandle_t, void*, tmsize_t) { return -1; }

    toff_t seekMapped(thandle_t stream, toff_t offset, int whence)
    {
        auto* mapped = static_cast<Mapped*>(stream);
        if (whence == SEEK_CUR)
            offset += mapped->position;
        else if (whence == SEEK_END)
            offset += mapped->size;
        return mapped->position = offset;
    }

    int closeMapped(thandle_t stream)
    {
        delete static_cast<Mapped*>(stream); // made for the handle that closes now
        return 0;
    }

    toff_t sizeOfMapped(thandle_t stream) { return static_cast<Mapped*>(stream)->size; }

    int giveMapping(thandle_t stream, void** bytes, toff_t* size)
    {
        auto* mapped = static_cast<Mapped*>(stream);
        *bytes = const_cast<std::uint8_t*>(mapped->bytes); // libtiff only reads from it
        *size = mapped->size;
        return 1;
    }

    void keepMapping(thandle_t, void*, toff_t) { }

    TiffHandle openMapped(const std::uint8_t* bytes, std::uint64_t size, TiffMessages& messages)
    {
        const auto options = tiffOpenOptions(messages);
        auto stream = std::make_unique<Mapped>(Mapped { bytes, size });
        TiffHandle handle(TIFFClientOpenExt(messages.fileName().toUtf8().constData(), "rhM",
                                            stream.get(), readMapped, refuseWriting, seekMapped,
                                            closeMapped, sizeOfMapped, giveMapping, keepMapping,
                                            options.get()));
        if (!handle)
            messages.fail("it is no TIFF file");
        static_cast<void>(stream.release()); // closeMapped deletes it
        return handle;
    }

} // namespace

void Unmapper::operator()(std::uint8_t* bytes) const noexcept { ::munmap(bytes, size); }

MappedTiffCopy::MappedTiffCopy(TiffFile& file, int index)
{
    const int copy = openUnnamedFile();
    const auto closeCopy = qScopeGuard([copy] { ::close(copy); });
    copyRanges(file, rangesOf(file, index), copy);
    leaveAlone(file, index, copy);
    const std::uint64_t size = file.sizeBytes();
    // A directory may end with the file, before the offset of the next.
    if (::ftruncate(copy, static_cast<off_t>(size)) != 0)
        throwFileSystemError("cannot make the temporary file", errno);
    void* bytes = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, copy, 0);
    if (bytes == MAP_FAILED)
        throwFileSystemError("cannot map the temporary file", errno);
    // The mapping keeps the bytes when the descriptor is closed.
    m_mapping = { static_cast<std::uint8_t*>(bytes), Unmapper { size } };
    m_handle = openMapped(m_mapping.get(), size, file.messages());
    if (TIFFSetSubDirectory(handle(), file.chain().offsets.at(static_cast<std::size_t>(index)))
        == 0)
        file.messages().fail("the directory of the page cannot be read");
    file.messages().forget();
}

void MappedTiffCopy::dropPages()
{
    // Advice only: that it is not taken costs memory, nothing else.
    static_cast<void>(::madvise(m_mapping.get(), m_mapping.get_deleter().size, MADV_DONTNEED));
}

} // namespace pagestack
