#include "engine/image/TiffHandle.h"

#include "engine/image/StagedFile.h"
#include "engine/support/SystemLog.h"

#include <cstdio>
#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstring>
#include <span>
#include <stdexcept>
#include <unistd.h>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// A damaged fax page can give a message a row.
    constexpr int mostReports = 20;

    /// No single table, strip or tile that libtiff holds may be larger.
    constexpr tmsize_t largestAllocation = tmsize_t { 256 } * 1024 * 1024;

    /// Warnings after which some rows hold no pixels of the page: libtiff 4.5 goes on after them as
    /// if it had decoded the strip.
    constexpr std::array<const char*, 4> lostPixelWarnings {
        "Premature EOF", // fax: the strip ends before its last row
        "Premature end of JPEG file",
        "premature end of data segment",
        "Corrupt JPEG data: bad Huffman code",
    };

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
        TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), largestAllocation);
        return options;
    }

    /// The position of libtiff in the file that a TiffPageSink shows it.
    struct SinkStream
    {
        TiffPageSink& sink;
        std::uint64_t position = 0;
    };

    tmsize_t readSink(thandle_t handle, void* buffer, tmsize_t size)
    {
        auto* stream = static_cast<SinkStream*>(handle);
        auto* to = static_cast<char*>(buffer);
        tmsize_t done = 0;
        const std::string& header = stream->sink.header;
        for (; done < size && stream->position < header.size(); ++done)
            to[done] = header[stream->position++];
        const std::uint64_t end = stream->sink.staged.size();
        if (done < size && stream->position < end) {
            const auto count = static_cast<tmsize_t>(std::min<std::uint64_t>(
                static_cast<std::uint64_t>(size - done), end - stream->position));
            try {
                stream->sink.staged.readAt(
                    stream->position,
                    { reinterpret_cast<std::uint8_t*>(to + done), static_cast<size_t>(count) });
            } catch (const std::runtime_error& error) {
                stream->sink.writeError = error.what();
                return -1;
            }
            stream->position += static_cast<std::uint64_t>(count);
            done += count;
        }
        return done;
    }

    tmsize_t writeSink(thandle_t handle, void* buffer, tmsize_t size)
    {
        auto* stream = static_cast<SinkStream*>(handle);
        const auto* from = static_cast<const char*>(buffer);
        tmsize_t done = 0;
        std::string& header = stream->sink.header;
        for (; done < size && stream->position < header.size(); ++done)
            header[stream->position++] = from[done];
        if (done == size)
            return done;
        if (stream->position + static_cast<std::uint64_t>(size - done) > stream->sink.limitBytes) {
            stream->sink.isFull = true;
            return -1;
        }
        try {
            stream->sink.staged.writeAt(stream->position,
                                        { reinterpret_cast<const std::uint8_t*>(from + done),
                                          static_cast<size_t>(size - done) });
        } catch (const std::runtime_error& error) {
            stream->sink.writeError = error.what();
            return -1;
        }
        stream->position += static_cast<std::uint64_t>(size - done);
        return size;
    }

    toff_t sizeOfSink(thandle_t handle)
    {
        return static_cast<SinkStream*>(handle)->sink.staged.size();
    }

    toff_t seekSink(thandle_t handle, toff_t offset, int whence)
    {
        auto* stream = static_cast<SinkStream*>(handle);
        if (whence == SEEK_SET)
            stream->position = offset;
        else if (whence == SEEK_CUR)
            stream->position += offset;
        else
            stream->position = sizeOfSink(handle) + offset;
        return stream->position;
    }

    int closeSink(thandle_t handle)
    {
        delete static_cast<SinkStream*>(handle); // made for the handle that closes now
        return 0;
    }

} // namespace

TiffMessages::TiffMessages(QString fileName)
    : m_fileName(std::move(fileName))
{
}

/// libtiff puts the file's name before some of its messages.
std::string TiffMessages::withoutName(std::string text) const
{
    const std::string name = m_fileName.toStdString() + ": ";
    return text.starts_with(name) ? text.substr(name.size()) : text;
}

void TiffMessages::addError(const char* module, const std::string& text)
{
    if (m_reason.empty())
        m_reason = withoutName(text);
    report("error", module, text);
}

void TiffMessages::addWarning(const char* module, const std::string& text)
{
    const bool pixelsAreLost
        = std::any_of(lostPixelWarnings.begin(), lostPixelWarnings.end(),
                      [&](const char* sign) { return text.find(sign) != std::string::npos; });
    if (pixelsAreLost && m_reason.empty())
        m_reason = withoutName(text);
    report("warning", module, text);
}

void TiffMessages::report(const char* kind, const char* module, const std::string& text)
{
    ++m_reported;
    if (m_reported > mostReports)
        return;
    if (m_reported == mostReports) {
        systemLog(u"%1: further messages are left out"_s.arg(m_fileName));
        return;
    }
    systemLog(u"%1: %2: %3: %4"_s.arg(m_fileName, QLatin1StringView(kind),
                                      QString::fromUtf8(module != nullptr ? module : "libtiff"),
                                      QString::fromStdString(withoutName(text))));
}

void TiffMessages::forget() { m_reason.clear(); }

void TiffMessages::fail(const char* fallback) const
{
    throw std::runtime_error(m_reason.empty() ? fallback : m_reason);
}

void TiffCloser::operator()(tiff* handle) const noexcept { TIFFClose(handle); }

TiffHandle openTiffForReading(int fileDescriptor, TiffMessages& messages)
{
    const auto options = openOptions(messages);
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

TiffHandle openTiffPageForWriting(TiffPageSink& sink, bool bigTiff, TiffMessages& messages)
{
    const auto options = openOptions(messages);
    auto stream = std::make_unique<SinkStream>(SinkStream { sink });
    TiffHandle handle(TIFFClientOpenExt("page", bigTiff ? "wl8m" : "wlm", stream.get(), readSink,
                                        writeSink, seekSink, closeSink, sizeOfSink, nullptr,
                                        nullptr, options.get()));
    if (!handle)
        messages.fail("the TIFF encoder did not start");
    static_cast<void>(stream.release()); // closeSink deletes it
    return handle;
}

} // namespace pagestack
