#pragma once

#include "engine/image/tiff/TiffDirectoryChain.h"
#include "engine/image/tiff/TiffMessages.h"

#include <memory>

// libtiff's own names for what it calls TIFF and TIFFOpenOptions; its header is included by .cpp
// files only.
struct tiff;
struct TIFFOpenOptions;

namespace pagestack {

struct TiffCloser
{
    void operator()(tiff* handle) const noexcept;
};

using TiffHandle = std::unique_ptr<tiff, TiffCloser>;

struct TiffOpenOptionsFreer
{
    void operator()(TIFFOpenOptions* options) const noexcept;
};

/// Options for opening a handle whose messages go to `messages`, which must outlive it, and that
/// takes no more than 256 MB for a single table, strip or tile.
std::unique_ptr<TIFFOpenOptions, TiffOpenOptionsFreer> tiffOpenOptions(TiffMessages& messages);

/// Opens the file for reading, header only: no directory is current yet. The position of
/// `fileDescriptor` is not used, so any number of handles, each with a thread, can share one; it
/// stays the caller's and must outlive the handle, as `messages`, which take the messages, must.
/// The bytes of `hidden` are read as 0. Throws std::runtime_error with the reason.
TiffHandle openTiffForReading(int fileDescriptor, TiffMessages& messages, FileRange hidden = {});

} // namespace pagestack
