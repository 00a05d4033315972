#pragma once

#include "engine/files/FileState.h"
#include "engine/image/tiff/TiffDirectoryChain.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pagestack {

class StagedFile;

/// Some bytes of a file that were read at once.
struct TiffWindow
{
    std::uint64_t offset = 0;
    std::vector<std::uint8_t> bytes;

    bool holds(std::uint64_t at, std::size_t count) const
    {
        return at >= offset && at - offset <= bytes.size() && count <= bytes.size() - (at - offset);
    }
    /// Fills `to` with what the file has from `at` on; false when not all of it is in here.
    bool copyTo(std::uint64_t at, std::span<std::uint8_t> to) const;
};

/// An open TIFF file and the places of its pages.
///
/// The chain of directories is walked once when the file is opened; after that every page is
/// reached in the same time, whatever its number. The file stays open as long as the document
/// lives; a TiffReader for each thread reads its pages. Any thread: nothing changes once it is
/// opened.
class OpenTiffFile
{
public:
    /// Throws std::runtime_error if the file cannot be opened, is not TIFF or has no page.
    explicit OpenTiffFile(const QString& path);
    /// The same for a complete file that has no name of its own yet; `name` is for messages.
    OpenTiffFile(const QString& name, StagedFile& file);
    ~OpenTiffFile();
    OpenTiffFile(const OpenTiffFile&) = delete;
    OpenTiffFile& operator=(const OpenTiffFile&) = delete;

    const QString& path() const { return m_path; }
    QString fileName() const; ///< the last component of the path

    /// Of the open file, as it was before anything was read.
    const FileState& stateAtOpening() const { return m_state; }
    /// Whether somebody has written to it since, as far as its size and date tell.
    bool hasChanged() const;
    std::uint64_t sizeBytes() const { return static_cast<std::uint64_t>(m_state.sizeBytes); }

    const TiffDirectoryChain& chain() const { return m_chain; }
    bool isBigEndian() const { return m_chain.format.isBigEndian; }

    /// Number of images in the main chain of directories, thumbnails included; 1 or more.
    int pageCount() const { return static_cast<int>(m_chain.offsets.size()); }

    /// What is wrong with the chain of directories ("the chain of pages leads back to page 1 after
    /// page 2"), so that pages may be missing; empty when it ends properly.
    const QString& chainFault() const { return m_chain.fault; }

    /// Fills all of `bytes` with what the file has from `offset` on. Throws std::runtime_error.
    void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const;

    /// The only value of a tag, a SHORT, LONG or LONG8; none for any other, for one beyond the end
    /// of the file, and where `value` is null. Throws std::runtime_error.
    std::optional<std::uint64_t> number(const TiffTagValue* value) const;

    // For libtiff, which walks the chain for itself, by every handle, and keeps what it finds: for
    // directories that are none of the file's pages it would hold a hundred megabytes a handle. So
    // the chain ends for it where it does for us; one that has no fault, and so nothing that
    // libtiff would have to say, ends at the first page: it gets the others by their offsets.
    std::uint64_t sizeNow() const; ///< 0 where it is not known
    /// Fills `bytes` from `offset` on, out of `window` where that has them; returns how many there
    /// were. Throws std::runtime_error.
    std::size_t readShown(std::uint64_t offset, std::span<std::uint8_t> bytes,
                          const TiffWindow& window) const;

    /// What the file has from the directory of page `index`, from 0, on: most of what is read of a
    /// directory, by whatever parser. Throws std::runtime_error.
    TiffWindow windowAtPage(int index) const;
    TiffWindow windowAt(std::uint64_t offset) const;

    /// The directory of page `index`, from 0, by the `window` there. Throws std::runtime_error if
    /// it cannot be read or has more values than should be held.
    TiffDirectory directory(int index, const TiffWindow& window) const;
    TiffDirectory directory(int index) const { return directory(index, windowAtPage(index)); }

    /// The directory at `offset`, be it one or not. Throws std::runtime_error if it cannot be read.
    TiffDirectory subDirectory(std::uint64_t offset) const;

private:
    OpenTiffFile(QString path, int file);
    void begin();

    QString m_path;
    int m_file; ///< its position is not used
    FileState m_state;
    TiffDirectoryChain m_chain;
};

} // namespace pagestack
