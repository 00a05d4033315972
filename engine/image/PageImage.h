#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/pixels/PageSource.h"

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>

namespace pagestack {

class Settings;
class SpareThreads;
enum class OutputType : int;
struct PrefetchedPage;
struct EncodedPieces;

/// How a page is saved, as far as the format does not say it.
struct SaveOptions
{
    int jpegQuality = 10; ///< as for PageImage::saveAsJpegWithName
    int tiffCompressionIndex = 0; ///< as for PageImage::saveAsTiffWithName
    SpareThreads* threads = nullptr; ///< may help with a large page; null: there are none
    StagedFile::Existing existing = StagedFile::Existing::Replaced; ///< not for `stage`
};

/// The image of one page, and the writers that turn it into a file.
///
/// It is a light handle: nothing is decoded before a writer or a utility asks for the pixels, and
/// then in bands. Copies share their source. One thread at a time a source, which is an opened file
/// or a clone of it.
///
/// Every writer encodes into a staged file beside `path` and puts it in place when it is complete,
/// replacing a file of that name; it returns false when it could not, and leaves what was at
/// `path` as it was. `failureReason` then says why. A failure that is not a plain refusal of the
/// file system also goes to the system log.
class PageImage
{
public:
    explicit PageImage(std::shared_ptr<const PageSource> source);

    int widthPx() const; ///< as stored, before orientation
    int heightPx() const;
    const PageSource& source() const { return *m_source; }
    std::shared_ptr<const PageSource> sharedSource() const { return m_source; }

    /// Chooses the writer by the extension of `path`, compared exactly: bmp, jpg, png, gif or tiff.
    /// Any other extension writes nothing and gives false.
    bool save(const QString& path, const Settings& settings);

    /// The same with what was made of the page ahead by `stage`, for the same path. If nothing was,
    /// `threads` can help. A file at `path` that is to be kept makes it fail.
    bool save(const QString& path, const Settings& settings, PrefetchedPage prepared,
              SpareThreads* threads = nullptr,
              StagedFile::Existing existing = StagedFile::Existing::Replaced);

    /// The first half of `save`: the complete file, which waits to be put in place and holds no
    /// memory. Throws std::runtime_error with the reason, which is told to nobody else.
    std::unique_ptr<StagedFile> stage(const QString& path, const SaveOptions& options) const;

    /// Writes to the system log what libtiff says of the file's chain of directories before it
    /// reads this page; nothing when the page is no page of a file, or that was said already.
    void reportChain() const;

    /// Writes to the system log what was said while the file of `prepared` was made of this page by
    /// another thread, as if it were made now.
    void writeComplaints(const PrefetchedPage& prepared) const;

    /// The page's part of a TIFF file in which pages are gathered (see encodePieces): for
    /// MultiPageTiffWriter::append. Throws std::runtime_error.
    EncodedPieces encodePieces(int compressionIndex) const;

    /// Bytes of the pixels as stored, decoded. Throws std::runtime_error when the page's
    /// description cannot be read.
    std::uint64_t decodedBytes() const;

    bool saveAsBmpWithName(const QString& path);
    bool saveAsGifWithName(const QString& path);
    bool saveAsPngWithName(const QString& path);
    /// `quality` in tenths; 10 is the best. Values outside 0..10 end up clamped by the encoder.
    bool saveAsJpegWithName(const QString& path, int quality);
    /// `compression` as in Settings::tiffCompressionIndex; any value outside 0..4 means none.
    bool saveAsTiffWithName(const QString& path, int compression);

    /// A gray copy with alpha, 8 bits a sample, of the same size as the upright image; the alpha of
    /// an opaque image is 255. Throws std::runtime_error when the page cannot be decoded.
    PageImage monochromeImage() const;

    /// In what the pixels that were made of the page last, with this image and its source, are not,
    /// or may not be, those of the page; a clause each.
    QStringList warnings() const;

    /// The names of the tags of the page that the TIFF file does not have that it was put into last
    /// with this image and its source.
    QStringList leftOutTags() const;

    /// Why the last writer returned false; empty after a success.
    QString failureReason() const { return m_failureReason; }

private:
    std::unique_ptr<StagedFile> encoded(const QString& path, OutputType type,
                                        const SaveOptions& options) const;
    bool write(const QString& path, OutputType type, const SaveOptions& options,
               PrefetchedPage prepared);

    std::shared_ptr<const PageSource> m_source;
    QString m_failureReason;
};

} // namespace pagestack
