#include "engine/image/tiffwriter/TiffPageStream.h"

#include "engine/files/ByteFile.h"

#include <cstdio>
#include <tiffio.h>

#include <algorithm>
#include <stdexcept>

namespace pagestack {

namespace {

    /// The position of libtiff in the file that a TiffPageStream shows it.
    struct SinkStream
    {
        TiffPageStream& sink;
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

TiffHandle openTiffPageForWriting(TiffPageStream& sink, bool bigTiff, TiffMessages& messages)
{
    const auto options = tiffOpenOptions(messages);
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
