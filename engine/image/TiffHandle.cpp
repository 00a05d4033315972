#include "engine/image/TiffHandle.h"

#include <cstdio>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <new>
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

TiffHandle openTiffForReading(int fileDescriptor, TiffMessages& messages)
{
    const auto options = tiffOpenOptions(messages);
    // r: read, h: header only, m: not mapped into memory, since a mapped file that another program
    // cuts short ends this program.
    TiffHandle handle(TIFFFdOpenExt(fileDescriptor, messages.fileName().toUtf8().constData(), "rhm",
                                    options.get()));
    if (!handle) {
        ::close(fileDescriptor);
        messages.fail("it is no TIFF file");
    }
    return handle;
}

} // namespace pagestack
