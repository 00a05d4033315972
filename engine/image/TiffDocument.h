#pragma once

#include "engine/files/FileDigest.h"
#include "engine/files/FileState.h"
#include "engine/image/PageImage.h"
#include "engine/options/RunOptions.h"

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
    /// Opens the file at `path`, whose pages are treated so. Throws as OpenTiffFile does.
    explicit TiffDocument(const QString& path, const PageTreatment& treatment = {});
    ~TiffDocument() = default;
    TiffDocument(const TiffDocument&) = delete;
    TiffDocument& operator=(const TiffDocument&) = delete;

    /// The same open file for another thread, even if another one is at the path now. Any thread.
    std::unique_ptr<TiffDocument> clone() const;

    // As of OpenTiffFile.
    QString path() const;
    const FileState& stateAtOpening() const;
    bool hasChanged() const;
    int pageCount() const;
    QString chainFault() const;

    /// Of the bytes of the file. Throws std::runtime_error when they cannot be read, or a StopScope
    /// says so.
    FileDigest digest() const;

    const PageTreatment& treatment() const { return m_treatment; }

    /// Page `index`, from 0. Throws std::out_of_range, reason "index 3 beyond bounds [0 .. 2]".
    /// Whether the page can be decoded shows only when it is read.
    PageImage page(int index) const;

private:
    TiffDocument(std::shared_ptr<class TiffReader> reader, const PageTreatment& treatment);

    std::shared_ptr<class TiffReader> m_reader;
    PageTreatment m_treatment;
};

/// The first page of the TIFF file `name`, with extension, of the program's resources; none if
/// there is no such file.
std::optional<PageImage> createImageWithName(const QString& name);

} // namespace pagestack
