#pragma once

#include "engine/image/tiff/OpenTiffFile.h"
#include "engine/image/tiff/TiffMessages.h"
#include "engine/image/tiff/TiffStream.h"

#include <memory>

namespace pagestack {

/// Reads the pages of a TIFF file, which share it, by a libtiff handle with one current page. One
/// thread at a time.
class TiffReader : private TiffStream
{
public:
    /// Opens the file. Throws as OpenTiffFile does, or with the first error of libtiff.
    explicit TiffReader(const QString& path);
    /// For a thread that works ahead: opens the handle for the first page and does not report the
    /// chain of directories. Any thread.
    explicit TiffReader(std::shared_ptr<const OpenTiffFile> document);

    const OpenTiffFile& document() const { return *m_document; }
    std::shared_ptr<const OpenTiffFile> sharedDocument() const { return m_document; }
    TiffMessages& messages() { return m_messages; }

    /// Takes over what another reader of the file said of page `index`.
    void adopt(int index, const PageDiagnostics& found);

    /// Nobody asks this reader what it has to say of the chain of pages.
    void leaveChainUnsaid() { m_hasWalked = true; }

    /// Makes page `index` (from 0) the current one, for reading its tags. Throws std::runtime_error
    /// when its directory cannot be read, or announces more tag values than should be held.
    tiff* load(int index);

    /// The same for decoding it from the start: the decoder is in its initial state and the
    /// messages are forgotten. Ends a pass over another page, or an earlier one over this page.
    tiff* restart(int index);

    /// The directory of page `index`, which becomes the current one; valid while it is.
    const TiffDirectory& directory(int index);

    /// As OpenTiffFile::readAt, for values of the current page's directory.
    void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const
    {
        if (!m_window.copyTo(offset, bytes))
            m_document->readAt(offset, bytes);
    }

private:
    std::uint64_t sizeBytes() override { return m_document->sizeNow(); }
    std::size_t read(std::uint64_t offset, std::span<std::uint8_t> bytes) override;

    void openHandle();
    void walkChain(int index);
    void leavePage();
    void loadAnew(int index);

    std::shared_ptr<const OpenTiffFile> m_document; ///< outlives the handle
    TiffMessages m_messages;
    TiffHandle m_handle;
    bool m_speaksOfChain = false;
    int m_current = -1;
    TiffWindow m_window; ///< at the current page's directory; empty before the first one
    TiffWindow m_elsewhere; ///< at what libtiff looks up besides
    TiffDirectory m_directory; ///< of the current page
    bool m_hasWalked = false; ///< libtiff knows the chain
    bool m_isLoaded = false; ///< the handle has the directory
    bool m_isPristine = false; ///< nothing was decoded since it was loaded
};

} // namespace pagestack
