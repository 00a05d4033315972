#pragma once

#include "engine/image/tiff/TiffDirectory.h"
#include "engine/image/tiff/TiffStream.h"

#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace pagestack {

class ByteFile;

/// A TIFF file in the making, of which libtiff writes one page at a time: libtiff sees a file with
/// a header of its own whose other bytes are those of `staged`, so that a page's strips and
/// directory land at its end with offsets that hold for it.
class TiffPageStream : public TiffStream
{
public:
    /// `staged` is borrowed and becomes no larger than `limitBytes`.
    TiffPageStream(ByteFile& staged, const TiffFormat& format,
                   std::uint64_t limitBytes = std::numeric_limits<std::uint64_t>::max());

    /// From now on what is appended is not written: `reserve` makes room for so many bytes at the
    /// end instead. Null: it is written again.
    void setReserve(std::function<void(std::uint64_t bytes)> reserve)
    {
        m_reserve = std::move(reserve);
    }

    std::uint64_t sizeBytes() override;
    std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) override;
    void write(std::uint64_t offset, std::span<const std::uint8_t> bytes) override;

    /// Of the page, which libtiff wrote into the header.
    std::uint64_t directoryOffset() const;
    bool isFull() const { return m_isFull; } ///< `staged` would have become too large
    /// Why `staged` took no more; empty while all is well.
    const std::string& writeError() const { return m_writeError; }

private:
    std::size_t headerPart(std::uint64_t offset, std::size_t size) const;
    template <typename Transfer>
    void guarded(Transfer transfer);

    ByteFile& m_staged;
    TiffFormat m_format;
    std::vector<std::uint8_t> m_header;
    std::uint64_t m_limitBytes;
    std::function<void(std::uint64_t bytes)> m_reserve;
    bool m_isFull = false;
    std::string m_writeError;
};

} // namespace pagestack
