#include "engine/image/tiffwriter/TiffPageStream.h"

#include "engine/files/ByteFile.h"

#include <algorithm>
#include <stdexcept>

namespace pagestack {

namespace {

    /// The file that a TiffPageStream shows libtiff.
    class SinkStream : public TiffStream
    {
    public:
        explicit SinkStream(TiffPageStream& sink)
            : m_sink(sink)
        {
        }

        std::uint64_t sizeBytes() override { return m_sink.staged.size(); }

        std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) override
        {
            const std::size_t inHeader = headerPart(offset, bytes.size());
            std::copy_n(m_sink.header.begin() + static_cast<std::ptrdiff_t>(offset), inHeader,
                        bytes.begin());
            const std::uint64_t begin = offset + inHeader;
            const std::uint64_t end = std::max(m_sink.staged.size(), begin);
            bytes = bytes.subspan(inHeader);
            bytes = bytes.first(std::min<std::uint64_t>(bytes.size(), end - begin));
            if (!bytes.empty())
                guarded([&] { m_sink.staged.readAt(begin, bytes); });
            return inHeader + bytes.size();
        }

        void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override
        {
            const std::size_t inHeader = headerPart(offset, bytes.size());
            std::copy_n(bytes.begin(), inHeader,
                        m_sink.header.begin() + static_cast<std::ptrdiff_t>(offset));
            bytes = bytes.subspan(inHeader);
            if (bytes.empty())
                return;
            if (offset + inHeader + bytes.size() > m_sink.limitBytes) {
                m_sink.isFull = true;
                throw std::runtime_error("the file is full");
            }
            guarded([&] { m_sink.staged.writeAt(offset + inHeader, bytes); });
        }

    private:
        /// How many of `size` bytes from `offset` on lie in the header.
        std::size_t headerPart(std::uint64_t offset, std::size_t size) const
        {
            const std::uint64_t begin = std::min<std::uint64_t>(offset, m_sink.header.size());
            return std::min<std::uint64_t>(size, m_sink.header.size() - begin);
        }

        /// Keeps the reason of a failure.
        template <typename Transfer>
        void guarded(Transfer transfer)
        try {
            transfer();
        } catch (const std::runtime_error& error) {
            m_sink.writeError = error.what();
            throw;
        }

        TiffPageStream& m_sink;
    };

} // namespace

TiffHandle openTiffPageForWriting(TiffPageStream& sink, bool bigTiff, TiffMessages& messages)
{
    return openTiff(std::make_unique<SinkStream>(sink), bigTiff ? "w8" : "w", messages);
}

} // namespace pagestack
