#pragma once

#include "engine/files/FileState.h"
#include "engine/image/tiff/TiffDirectoryChain.h"

#include <QString>

#include <cstdint>
#include <span>

namespace pagestack {

class StagedFile;

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

    // For libtiff, which walks the chain for itself and keeps what it finds: for directories that
    // are none of the file's pages it would hold a hundred megabytes a handle. So the chain ends
    // for it where it does for us.
    std::uint64_t sizeNow() const; ///< 0 where it is not known
    /// Fills `bytes` from `offset` on; returns how many there were. Throws std::runtime_error.
    std::size_t readShown(std::uint64_t offset, std::span<std::uint8_t> bytes) const;

    /// The directory of page `index`, from 0. Throws std::runtime_error if it cannot be read or
    /// has more values than should be held.
    TiffDirectory directory(int index) const;

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
