#pragma once

#include <cstdint>
#include <memory>
#include <span>

struct tiff; // libtiff's own name of TIFF; only .cpp files include its header

namespace pagestack {

class TiffMessages;

struct TiffCloser
{
    void operator()(tiff* handle) const noexcept;
};

using TiffHandle = std::unique_ptr<tiff, TiffCloser>;

/// The bytes that one libtiff handle reads or writes. What an operation throws is a failure to
/// libtiff.
class TiffStream
{
public:
    TiffStream() = default;
    virtual ~TiffStream() = default;
    // The handle has its address.
    TiffStream(const TiffStream&) = delete;
    TiffStream& operator=(const TiffStream&) = delete;

    virtual std::uint64_t sizeBytes() = 0;

    /// Fills `bytes` with what lies from `offset` on; returns how many there were.
    virtual std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) = 0;

    /// Throws std::logic_error unless the stream is one for writing.
    virtual void write(std::uint64_t offset, std::span<const std::uint8_t> bytes);

    /// All bytes in memory; empty unless they are mapped.
    virtual std::span<const std::uint8_t> mapping() const { return {}; }

    std::uint64_t position = 0; ///< of the handle, which keeps no note of it
};

/// Opens a handle on `stream`: in the mode "r" without a current directory, in "w" for one page,
/// little-endian, in "w8" the same as BigTIFF. No single table, strip or tile that libtiff holds
/// may take more than 256 MB. `messages` get what libtiff says and must, as `stream`, outlive the
/// handle. Throws std::runtime_error with the reason.
TiffHandle openTiff(TiffStream& stream, const char* mode, TiffMessages& messages);

} // namespace pagestack
