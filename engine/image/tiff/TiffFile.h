#pragma once

#include "engine/files/FileState.h"
#include "engine/image/tiff/TiffDirectoryChain.h"
#include "engine/image/tiff/TiffHandle.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <span>

namespace pagestack {

/// A TIFF file with one current page. Shared by the document and its pages; one thread at a time.
///
/// What does not change is kept apart and shared with the clones, each of which another thread may
/// have: the open file, which they read at places of their own, and the offsets of its directories.
class TiffFile
{
public:
    /// Throws std::runtime_error with the reason when the file cannot be opened, is no TIFF file or
    /// has no page.
    explicit TiffFile(const QString& path);
    ~TiffFile();
    TiffFile(const TiffFile&) = delete;
    TiffFile& operator=(const TiffFile&) = delete;

    /// Another current page in the same open file, whatever is at the path by now. Costs nothing
    /// before a page is asked for. Any thread.
    std::shared_ptr<TiffFile> clone() const;

    const QString& path() const;
    const TiffDirectoryChain& chain() const;
    std::uint64_t sizeBytes() const;
    const FileState& stateAtOpening() const; ///< before anything was read
    TiffMessages& messages() { return m_messages; }

    /// Fills all of `bytes` with what the file has from `offset` on. Throws std::runtime_error.
    void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const;

    /// The entries of the directory of page `index`, from 0. Throws std::runtime_error.
    TiffDirectory directory(int index) const;

    /// Takes over what a clone said of page `index`, as if it were read here, now.
    void adopt(int index, const PageDiagnostics& found);

    /// Makes page `index` (from 0) the current one, for reading its tags. Throws std::runtime_error
    /// when its directory cannot be read, or announces more tag values than should be held.
    tiff* describe(int index);

    /// The same for decoding it from the start: the decoder is in its initial state and the
    /// messages are forgotten. Ends a pass over another page, or an earlier one over this page.
    tiff* select(int index);

    /// The handle, at the page that was selected last.
    tiff* current() const { return m_handle.get(); }

private:
    struct Opened;

    explicit TiffFile(std::shared_ptr<const Opened> opened, bool isClone);
    void openHandle();
    void walkChain(int index);
    void leavePage();

    std::shared_ptr<const Opened> m_opened; ///< outlives the handle
    TiffMessages m_messages;
    const bool m_isClone; ///< leaves it to the original to speak of the chain
    TiffHandle m_handle; ///< a clone has none before its first page
    int m_current = -1; ///< page whose directory is loaded
    bool m_hasWalked = false; ///< libtiff knows the chain
    bool m_isLoaded = false; ///< the handle has a directory
    bool m_isPristine = false; ///< nothing was decoded since it was loaded
};

} // namespace pagestack
