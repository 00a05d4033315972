#include "engine/image/tiff/TiffHandle.h"

#include "engine/files/PosixFile.h"

#include <cstdio>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <new>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

namespace pagestack {

namespace {

    /// No single table, strip or tile that libtiff holds may be larger.
    constexpr tmsize_t largestAllocation = tmsize_t { 256 } * 1024 * 1024;

    std::string formatted(const char* format, va_list arguments)
    {
        std::array<char, 512> text = {};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        std::replace(text.begin(), text.end(), '\n', ' ');
        return text.data();
    }

    int onError(TIFF*, void* messages, const char* module, const char* format, va_list arguments)
    {
        static_cast<TiffMessages*>(messages)->addError(module, formatted(format, arguments));
        return 1; // handled: the global handler stays silent
    }

    int onWarning(TIFF*, void* messages, const char* module, const char* format, va_list arguments)
    {
        static_cast<TiffMessages*>(messages)->addWarning(module, formatted(format, arguments));
        return 1;
    }

    /// The position of one handle in an open file that it may share with others.
    struct FileStream
    {
        int file;
        FileRange hidden;
        std::uint64_t position = 0;
    };

    /// Clears what is hidden of the bytes that were read from `position` on.
    void hide(const FileRange& hidden, std::uint64_t position, std::span<char> bytes)
    {
        const std::uint64_t begin = std::max(hidden.begin, position);
        const std::uint64_t end = std::min<std::uint64_t>(hidden.end, position + bytes.size());
        if (begin < end)
            std::ranges::fill(bytes.subspan(begin - position, end - begin), '\0');
    }

    tmsize_t readFile(thandle_t stream, void* buffer, tmsize_t size)
    {
        auto* from = static_cast<FileStream*>(stream);
        const std::uint64_t position = from->position;
        tmsize_t done = 0;
        while (done < size) {
            const ssize_t got = retryInterrupted([&] {
                return ::pread(from->file, static_cast<char*>(buffer) + done,
                               static_cast<std::size_t>(size - done),
                               static_cast<off_t>(from->position));
            });
            if (got < 0)
                return -1;
            if (got == 0)
                break;
            from->position += static_cast<std::uint64_t>(got);
            done += got;
        }
        hide(from->hidden, position,
             { static_cast<char*>(buffer), static_cast<std::size_t>(done) });
        return done;
    }

    tmsize_t refuseWriting(thandle_t, void*, tmsize_t) { return -1; }

    toff_t sizeOfFile(thandle_t stream)
    {
        struct stat status = {};
        const bool isKnown = ::fstat(static_cast<FileStream*>(stream)->file, &status) == 0;
        return isKnown ? static_cast<toff_t>(status.st_size) : 0;
    }

    toff_t seekFile(thandle_t stream, toff_t offset, int whence)
    {
        auto* in = static_cast<FileStream*>(stream);
        if (whence == SEEK_CUR)
            offset += in->position;
        else if (whence == SEEK_END)
            offset += sizeOfFile(stream);
        return in->position = offset;
    }

    int closeFile(thandle_t stream)
    {
        delete static_cast<FileStream*>(stream); // made for the handle that closes now
        return 0;
    }

} // namespace

void TiffOpenOptionsFreer::operator()(TIFFOpenOptions* options) const noexcept
{
    TIFFOpenOptionsFree(options);
}

std::unique_ptr<TIFFOpenOptions, TiffOpenOptionsFreer> tiffOpenOptions(TiffMessages& messages)
{
    std::unique_ptr<TIFFOpenOptions, TiffOpenOptionsFreer> options(TIFFOpenOptionsAlloc());
    if (!options)
        throw std::bad_alloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &messages);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, &messages);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), largestAllocation);
    return options;
}

void TiffCloser::operator()(tiff* handle) const noexcept { TIFFClose(handle); }

TiffHandle openTiffForReading(int fileDescriptor, TiffMessages& messages, FileRange hidden)
{
    const auto options = tiffOpenOptions(messages);
    // r: read, h: header only, m: not mapped into memory, since a mapped file that another program
    // cuts short ends this program.
    auto stream = std::make_unique<FileStream>(FileStream { fileDescriptor, hidden });
    TiffHandle handle(TIFFClientOpenExt(messages.fileName().toUtf8().constData(), "rhm",
                                        stream.get(), readFile, refuseWriting, seekFile, closeFile,
                                        sizeOfFile, nullptr, nullptr, options.get()));
    if (!handle)
        messages.fail("it is no TIFF file");
    static_cast<void>(stream.release()); // closeFile deletes it
    return handle;
}

} // namespace pagestack
