#include "engine/image/tiff/TiffStream.h"

#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiff/TiffMessages.h"

#include <cstdio>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <new>
#include <stdexcept>
#include <string>

namespace pagestack {

namespace {

    std::string formatted(const char* format, va_list arguments)
    {
        std::array<char, 512> text = {};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        std::replace(text.begin(), text.end(), '\n', ' ');
        return text.data();
    }

    /// Returns what says that the message is handled: the global handler stays silent.
    template <typename Take>
    int taken(void* messages, Take take)
    {
        auto& all = *static_cast<TiffMessages*>(messages);
        try {
            take(all);
        } catch (const std::exception&) { // no exception may pass libtiff
            all.noteWantOfMemory();
        }
        return 1;
    }

    int onError(TIFF*, void* messages, const char* module, const char* format, va_list arguments)
    {
        return taken(messages,
                     [&](auto& all) { all.addError(module, formatted(format, arguments)); });
    }

    int onWarning(TIFF*, void* messages, const char* module, const char* format, va_list arguments)
    {
        return taken(messages,
                     [&](auto& all) { all.addWarning(module, formatted(format, arguments)); });
    }

    struct OptionsFreer
    {
        void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
    };

    std::unique_ptr<TIFFOpenOptions, OptionsFreer> openOptions(TiffMessages& messages)
    {
        std::unique_ptr<TIFFOpenOptions, OptionsFreer> options(TIFFOpenOptionsAlloc());
        if (!options)
            throw std::bad_alloc();
        TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &messages);
        TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, &messages);
        TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(),
                                            static_cast<tmsize_t>(largestTiffAllocation));
        return options;
    }

    TiffStream& of(thandle_t stream) { return *static_cast<TiffStream*>(stream); }

    /// Moves on by what `transfer` returns; -1 when it throws: no exception may pass libtiff.
    template <typename Transfer>
    tmsize_t moved(TiffStream& stream, Transfer transfer)
    try {
        const std::size_t count = transfer();
        stream.position += count;
        return static_cast<tmsize_t>(count);
    } catch (const std::exception&) {
        return -1;
    }

    tmsize_t readStream(thandle_t handle, void* buffer, tmsize_t size)
    {
        TiffStream& stream = of(handle);
        const std::span bytes(static_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(size));
        return moved(stream, [&] { return stream.read(stream.position, bytes); });
    }

    tmsize_t writeStream(thandle_t handle, void* buffer, tmsize_t size)
    {
        TiffStream& stream = of(handle);
        const std::span bytes(static_cast<const std::uint8_t*>(buffer),
                              static_cast<std::size_t>(size));
        return moved(stream, [&] {
            stream.write(stream.position, bytes);
            return bytes.size();
        });
    }

    toff_t sizeOfStream(thandle_t stream) { return of(stream).sizeBytes(); }

    toff_t seekStream(thandle_t stream, toff_t offset, int whence)
    {
        if (whence == SEEK_CUR)
            offset += of(stream).position;
        else if (whence == SEEK_END)
            offset += sizeOfStream(stream);
        return of(stream).position = offset;
    }

    int keepStream(thandle_t) { return 0; }

    int mapStream(thandle_t stream, void** bytes, toff_t* size)
    {
        const std::span<const std::uint8_t> mapping = of(stream).mapping();
        *bytes = const_cast<std::uint8_t*>(mapping.data()); // libtiff only reads from it
        *size = mapping.size();
        return mapping.empty() ? 0 : 1;
    }

    void keepMapping(thandle_t, void*, toff_t) { }

} // namespace

void TiffStream::write(std::uint64_t, std::span<const std::uint8_t>)
{
    throw std::logic_error("the file is open for reading");
}

void TiffCloser::operator()(tiff* handle) const noexcept { TIFFClose(handle); }

TiffHandle openTiff(TiffStream& stream, const char* mode, TiffMessages& messages)
{
    const auto options = openOptions(messages);
    const bool isRead = *mode == 'r';
    // h: header only, l: little-endian, M and m: mapped into memory or not.
    const std::string flags
        = std::string(mode) + (isRead ? 'h' : 'l') + (stream.mapping().empty() ? 'm' : 'M');
    const QByteArray name = isRead ? messages.fileName().toUtf8() : QByteArray("page");
    stream.position = 0;
    TiffHandle handle(TIFFClientOpenExt(name.constData(), flags.c_str(), &stream, readStream,
                                        writeStream, seekStream, keepStream, sizeOfStream,
                                        mapStream, keepMapping, options.get()));
    if (!handle)
        messages.fail(isRead ? "it is no TIFF file" : "the TIFF encoder did not start");
    return handle;
}

} // namespace pagestack
