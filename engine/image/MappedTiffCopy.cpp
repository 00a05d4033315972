#include "engine/image/MappedTiffCopy.h"

#include "engine/files/FileBytes.h"
#include "engine/image/TiffFile.h"

#include <QScopeGuard>

#include <tiffio.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::size_t copyBytes = std::size_t { 1024 } * 1024;

    void copyFile(const TiffFile& from, int to)
    {
        std::vector<std::uint8_t> buffer(copyBytes);
        for (std::uint64_t done = 0; done < from.sizeBytes(); done += buffer.size()) {
            buffer.resize(std::min<std::uint64_t>(copyBytes, from.sizeBytes() - done));
            from.readAt(done, buffer);
            writeFully(to, done, buffer);
        }
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

MappedTiffCopy::MappedTiffCopy(TiffFile& file, int index)
{
    const int copy = openUnnamedFile();
    const auto closeCopy = qScopeGuard([copy] { ::close(copy); });
    copyFile(file, copy);
    void* bytes = ::mmap(nullptr, file.sizeBytes(), PROT_READ, MAP_SHARED, copy, 0);
    if (bytes == MAP_FAILED)
        throwFileSystemError("cannot map the temporary file", errno);
    // The mapping keeps the bytes when the descriptor is closed.
    m_bytes = static_cast<std::uint8_t*>(bytes);
    m_size = file.sizeBytes();
    try {
        m_handle = openMapped(m_bytes, m_size, file.messages());
        if (TIFFSetSubDirectory(handle(), file.chain().offsets.at(static_cast<std::size_t>(index)))
            == 0)
            file.messages().fail("the directory of the page cannot be read");
    } catch (const std::runtime_error&) {
        m_handle.reset();
        ::munmap(m_bytes, m_size);
        throw;
    }
    file.messages().forget();
}

MappedTiffCopy::~MappedTiffCopy()
{
    m_handle.reset();
    ::munmap(m_bytes, m_size);
}

void MappedTiffCopy::dropPages()
{
    // Advice only: that it is not taken costs memory, nothing else.
    static_cast<void>(::madvise(m_bytes, m_size, MADV_DONTNEED));
}

} // namespace pagestack
