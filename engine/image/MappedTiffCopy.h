#pragma once

#include "engine/image/TiffHandle.h"

#include <cstdint>

namespace pagestack {

class TiffFile;

/// A second handle on a TIFF file for pages with a very large compressed strip. libtiff reads a
/// strip as a whole before it decodes its first row; where the file is mapped into memory it
/// decodes from the mapping instead, and what was decoded can be dropped.
///
/// The mapping is of a private copy in a temporary file: a mapped file that another program cuts
/// short would end this one.
class MappedTiffCopy
{
public:
    /// Copies `file` and makes page `index` the current one of the handle, whose messages go to
    /// those of `file`, which must outlive this object. Throws std::runtime_error with the reason.
    MappedTiffCopy(TiffFile& file, int index);
    ~MappedTiffCopy();
    MappedTiffCopy(const MappedTiffCopy&) = delete;
    MappedTiffCopy& operator=(const MappedTiffCopy&) = delete;

    tiff* handle() const { return m_handle.get(); }

    /// Gives back the memory of what was read so far; it is read again where it is needed.
    void dropPages();

private:
    std::uint8_t* m_bytes = nullptr;
    std::uint64_t m_size = 0;
    TiffHandle m_handle;
};

} // namespace pagestack
