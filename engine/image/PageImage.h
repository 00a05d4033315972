#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/pixels/PageSource.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/log/Diagnostic.h"

#include <QString>

#include <memory>

namespace pagestack {

class Settings;
class SpareThreads;
struct SaveOptions;
enum class OutputType : int;

/// The result of encoding a page before its turn, on any thread. May be empty; the page is then
/// encoded when it is taken.
struct PrefetchedPage
{
    std::unique_ptr<StagedFile> file; ///< the complete output; only to be put in place
    PageDiagnostics diagnostics; ///< of `file`
    EncodedPieces pieces; ///< for the TIFF file that the page is gathered in
};

/// The image of one page, and the writers that turn it into a file.
///
/// It is a light handle: nothing is decoded before a writer or a utility asks for the pixels, and
/// then in bands. Copies share their source. One thread at a time a source, which is an opened file
/// or a clone of it.
///
/// Every writer encodes into a staged file beside `path` and puts it in place when it is complete,
/// replacing a file of that name; it returns false when it could not, and leaves what was at
/// `path` as it was. `failureReason` then says why. Any failure but the refusal of an extension
/// also goes to the system log, unless it is met by the `save` that takes a PrefetchedPage.
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

    /// The same with what `encodedPage` made of the page ahead for the same path. If nothing was,
    /// `threads` can help. A file at `path` that is to be kept makes it fail. Nothing goes to the
    /// system log: the caller has `takeDiagnostics`, `failureReason` and `failureLine` for it.
    bool save(const QString& path, const Settings& settings, PrefetchedPage prepared,
              SpareThreads* threads = nullptr,
              StagedFile::Existing existing = StagedFile::Existing::Replaced);

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

    /// Everything that was met while the page was read, and put into a TIFF file, the last time
    /// with this image and its source; the log lines since the last call.
    PageDiagnostics takeDiagnostics() const;

    /// Takes over what another thread met while it made the page's file, as if it were made now.
    void adopt(const PageDiagnostics& found) const;

    /// Why the last writer returned false; empty after a success.
    QString failureReason() const { return m_failureReason; }

    /// The same for the system log, after the name of the writer; empty for a plain refusal of the
    /// extension.
    QString failureLine() const { return m_failureLine; }

private:
    bool write(const QString& path, OutputType type, const SaveOptions& options,
               PrefetchedPage prepared);
    bool logged(bool isWritten) const;

    std::shared_ptr<const PageSource> m_source;
    QString m_failureReason;
    QString m_failureLine;
};

} // namespace pagestack
