#pragma once

#include "engine/files/FileState.h"
#include "engine/image/PageImage.h"

#include <QString>

#include <memory>
#include <optional>

namespace pagestack {

/// An opened TIFF file, the image that holds all pages of a source: an OpenTiffFile with the reader
/// of one thread.
///
/// The file is read in bands, never as a whole, and stays open as long as the document, a clone or
/// one of their pages lives. One thread at a time, a clone and its pages another.
class TiffDocument
{
public:
    /// Opens the file at `path`. Throws std::runtime_error with the reason when it cannot be
    /// opened, is no TIFF file or has no page.
    explicit TiffDocument(const QString& path);

    /// The same open file for another thread: its pages are those of the file as it was opened,
    /// even when there is another file at the path by now. Any thread.
    std::unique_ptr<TiffDocument> clone() const;

    // As of OpenTiffFile.
    QString path() const;
    const FileState& stateAtOpening() const;
    int pageCount() const;
    QString chainFault() const;

    /// Page `index`, counted from 0. Throws std::out_of_range, reason
    /// "index 3 beyond bounds [0 .. 2]", for an index that does not exist. Whether the page can be
    /// decoded shows only when it is read.
    PageImage page(int index) const;

private:
    explicit TiffDocument(std::shared_ptr<class TiffReader> reader);

    std::shared_ptr<class TiffReader> m_reader;
};

/// The first page of the TIFF file of that name, with extension, among the program's resources;
/// none when there is no such resource or it is no TIFF file.
std::optional<PageImage> createImageWithName(const QString& name);

} // namespace pagestack
