#pragma once

#include "engine/image/TiffDirectoryChain.h"
#include "engine/image/TiffHandle.h"

#include <QString>

#include <cstdint>
#include <span>

namespace pagestack {

/// An open TIFF file with one current page. Shared by the document and its pages; one thread at a
/// time.
class TiffFile
{
public:
    /// Throws std::runtime_error with the reason when the file cannot be opened, is no TIFF file or
    /// has no page.
    explicit TiffFile(const QString& path);

    const QString& path() const { return m_path; }
    const TiffDirectoryChain& chain() const { return m_chain; }
    std::uint64_t sizeBytes() const { return m_sizeBytes; }
    TiffMessages& messages() { return m_messages; }

    /// Fills all of `bytes` with what the file has from `offset` on. Throws std::runtime_error.
    void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const;

    /// Makes page `index` (from 0) the current one, for reading its tags. Throws std::runtime_error
    /// when its directory cannot be read.
    tiff* describe(int index);

    /// The same for decoding it from the start: the decoder is in its initial state and the
    /// messages are forgotten. Ends a pass over another page, or an earlier one over this page.
    tiff* select(int index);

    /// The handle, at the page that was selected last.
    tiff* current() const { return m_handle.get(); }

private:
    void leavePage();

    QString m_path;
    TiffMessages m_messages;
    TiffDirectoryChain m_chain;
    std::uint64_t m_sizeBytes = 0;
    TiffHandle m_handle;
    int m_current = -1; ///< page whose directory is loaded
    bool m_isLoaded = false; ///< the handle has a directory
    bool m_isPristine = false; ///< nothing was decoded since it was loaded
};

} // namespace pagestack
