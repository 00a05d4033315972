#pragma once

#include "engine/files/FileState.h"
#include "engine/image/PageImage.h"

#include <QString>

#include <memory>

namespace pagestack {

/// An opened TIFF file, the image that holds all pages of a source.
///
/// The chain of directories is walked once when the file is opened; after that every page is
/// reached in the same time, whatever its number. The file is read in bands, never as a whole, and
/// stays open as long as the document, a clone or one of their pages lives. One thread at a time, a
/// clone and its pages another.
class TiffDocument
{
public:
    /// Opens the file at `path`. Throws std::runtime_error with the reason when it cannot be
    /// opened, is no TIFF file or has no page.
    explicit TiffDocument(const QString& path);
    ~TiffDocument();
    TiffDocument(const TiffDocument&) = delete;
    TiffDocument& operator=(const TiffDocument&) = delete;

    /// The same open file for another thread: its pages are those of the file as it was opened,
    /// even when there is another file at the path by now. Any thread.
    std::unique_ptr<TiffDocument> clone() const;

    QString path() const;

    /// Of the file that is read, as it was before anything was read.
    const FileState& stateAtOpening() const;

    /// Number of images in the main chain of directories, thumbnails included; 1 or more.
    int pageCount() const;

    /// Page `index`, counted from 0. Throws std::out_of_range, reason
    /// "index 3 beyond bounds [0 .. 2]", for an index that does not exist. Whether the page can be
    /// decoded shows only when it is read.
    PageImage page(int index) const;

    /// What is wrong with the chain of directories ("the chain of pages leads back to page 1 after
    /// page 2"), so that pages may be missing; empty when it ends properly.
    QString chainFault() const;

private:
    explicit TiffDocument(std::shared_ptr<class TiffReader> reader);

    std::shared_ptr<class TiffReader> m_reader;
};

} // namespace pagestack
