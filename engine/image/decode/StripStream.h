#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace pagestack {

class OpenTiffFile;

/// The encoded bytes of a strip or tile, from the first to the last, in chunks. One thread.
class EncodedBytes
{
public:
    /// The `size` bytes from `offset` on, as far as `file`, which is borrowed, has them.
    /// `isReversed`: every byte has its lowest bit first (FillOrder 2).
    EncodedBytes(const OpenTiffFile& file, std::uint64_t offset, std::uint64_t size,
                 bool isReversed);

    /// Bytes that `next` has not given yet.
    std::uint64_t left() const { return m_left; }

    /// The next bytes, at most 64 KiB unless `most` says otherwise; empty after the last. Valid
    /// until the next call. Throws std::runtime_error when they cannot be read.
    std::span<const std::uint8_t> next(std::uint64_t most = std::uint64_t { 64 } * 1024);

private:
    const OpenTiffFile& m_file;
    std::uint64_t m_offset;
    std::uint64_t m_left;
    bool m_isReversed;
    std::vector<std::uint8_t> m_chunk;
};

/// The decoded bytes of one strip or tile, from the first to the last. One thread.
class StripStream
{
public:
    virtual ~StripStream() = default;

    /// Fills all of `to`. Throws std::runtime_error if the data end before or are damaged.
    void read(std::span<std::uint8_t> to);

    /// Goes on to the end of the data, or over little more than `most` decoded bytes, and returns
    /// how many there were. Throws std::runtime_error if the data are damaged.
    std::uint64_t skipRest(std::uint64_t most);

protected:
    /// Returns how many bytes of `to`, which is not empty, it has filled; 0 at the end.
    virtual std::size_t readSome(std::span<std::uint8_t> to) = 0;
    /// Throws the std::runtime_error of a stream that ends too early.
    [[noreturn]] virtual void failShort() const = 0;
};

/// The zlib format (RFC 1950), which TIFF calls Deflate: compression 8 and 32946. `skipRest`
/// compares the checksum.
std::unique_ptr<StripStream> inflateStream(EncodedBytes bytes);

/// Runs and literals: TIFF 6.0, section 9. Runs may reach over the ends of rows.
std::unique_ptr<StripStream> packBitsStream(EncodedBytes bytes);

enum class WholeStream {
    Fitting, ///< sound, and as long as it should be
    Longer, ///< nothing more is known of it
    Shorter,
    Damaged,
};

/// Decodes a whole zlib stream into `to` in one step, which is faster, and says what it is. Throws
/// std::bad_alloc.
WholeStream inflateWhole(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to);

/// Throws the std::runtime_error of such a stream; returns false for a longer one.
bool isFitting(WholeStream stream);

} // namespace pagestack
