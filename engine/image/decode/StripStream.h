#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

/// The decoded bytes of one strip or tile, from the first to the last. One thread.
class StripStream
{
public:
    virtual ~StripStream() = default;

    /// Fills all of `to` with the next bytes. Throws std::runtime_error when there are not so many,
    /// or when what is encoded is damaged.
    virtual void read(std::span<std::uint8_t> to) = 0;

    /// Goes on to the end of what is encoded, but no further than `most` decoded bytes, and returns
    /// how many there were. Throws std::runtime_error when what is encoded turns out to be damaged.
    virtual std::uint64_t skipRest(std::uint64_t most) = 0;

protected:
    StripStream() = default;
    StripStream(const StripStream&) = delete;
    StripStream& operator=(const StripStream&) = delete;
};

} // namespace pagestack
