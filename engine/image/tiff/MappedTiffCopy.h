#pragma once

#include "engine/image/tiff/TiffStream.h"

#include <cstdint>
#include <memory>

namespace pagestack {

class TiffReader;

struct Unmapper
{
    std::uint64_t size = 0; ///< of the mapping
    void operator()(std::uint8_t* bytes) const noexcept;
};

/// A second handle on a page of a TIFF file with a very large compressed strip. libtiff reads a
/// strip as a whole before it decodes its first row; where the file is mapped into memory it
/// decodes from the mapping instead, and what was decoded can be dropped.
///
/// The mapping is of a private copy in a temporary file: a mapped file that another program cuts
/// short would end this one. Of other pages the copy has nothing but holes.
class MappedTiffCopy : private TiffStream
{
public:
    /// Copies page `index` of the reader's file and makes it the current one of the handle, whose
    /// messages go to those of `reader`, which must outlive the copy. Throws std::runtime_error.
    MappedTiffCopy(TiffReader& reader, int index);

    tiff* handle() const { return m_handle.get(); }

    /// Gives back the memory of what was read so far; it is read again where it is needed.
    void dropPages();

private:
    std::uint64_t sizeBytes() override { return m_mapping.get_deleter().size; }
    std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) override;
    std::span<const std::uint8_t> mapping() const override
    {
        return { m_mapping.get(), m_mapping.get_deleter().size };
    }

    std::unique_ptr<std::uint8_t, Unmapper> m_mapping;
    TiffHandle m_handle; ///< closed before the mapping goes
};

} // namespace pagestack
