#pragma once

#include "engine/files/FileDigest.h"
#include "engine/files/StagedFile.h"
#include "engine/image/pixels/PageSource.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/image/verify/TiffProof.h"
#include "engine/log/Diagnostic.h"
#include "engine/options/RunOptions.h"

#include <QString>

#include <memory>
#include <optional>

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
    std::optional<TiffPageProof> proof; ///< for the same, where it is verified
    std::optional<FileDigest> digest; ///< of `file`, where it is wanted
};

/// The image of one page, and the writers that turn it into a file.
///
/// A light handle: pixels are decoded when a writer asks for them, in bands. Copies share their
/// source. One thread at a time a source, which is an opened file or a clone of it.
///
/// A writer replaces a file at `path`, or returns false, leaves it as it was and keeps the
/// `failureReason`. Failures other than the refusal of an extension also go to the system log,
/// except those of the `save` that takes a PrefetchedPage.
class PageImage
{
public:
    explicit PageImage(std::shared_ptr<const PageSource> source);

    int widthPx() const; ///< as stored, before orientation
    int heightPx() const;
    const PageSource& source() const { return *m_source; }
    std::shared_ptr<const PageSource> sharedSource() const { return m_source; }

    /// Chooses the writer by the extension of `path`: exactly bmp, jpg, png, gif or tiff.
    bool save(const QString& path, const Settings& settings);

    /// The same with the result of `encodedPage` for the same path, if there is one; else `threads`
    /// can help. Fails if a file at `path` is to be kept, or if the file is verified, as
    /// `encodedPage` was asked to, and does not show the page. Nothing goes to the
    /// system log: the caller has `takeDiagnostics` and `failureLine` for it.
    bool save(const QString& path, const Settings& settings, PrefetchedPage prepared,
              SpareThreads* threads = nullptr,
              StagedFile::Existing existing = StagedFile::Existing::Replaced,
              const RunOptions& choices = {});

    bool saveAsBmpWithName(const QString& path);
    bool saveAsGifWithName(const QString& path);
    bool saveAsPngWithName(const QString& path);
    /// `quality` in tenths; 10 is the best. Values outside 0..10 end up clamped by the encoder.
    bool saveAsJpegWithName(const QString& path, int quality);
    /// `compression` as in Settings::tiffCompressionIndex; any value outside 0..4 means none.
    bool saveAsTiffWithName(const QString& path, int compression);

    /// A gray copy of the upright image, 8 bits a sample, with alpha. Throws std::runtime_error.
    PageImage monochromeImage() const;

    /// The findings of the last time that the page was read and put into a TIFF file, with the log
    /// lines since the last call.
    PageDiagnostics takeDiagnostics() const;

    /// Takes over the findings of another thread that made the page's file.
    void adopt(const PageDiagnostics& found) const;

    /// Why the last writer returned false; empty after a success.
    QString failureReason() const { return m_failureReason; }

    /// Of the file that the last `save` put in place, if `choices` asked for it.
    const std::optional<FileDigest>& digest() const { return m_digest; }

    /// The same as a line of the system log; empty for a refused extension.
    QString failureLine() const { return m_failureLine; }

private:
    bool write(const QString& path, OutputType type, const SaveOptions& options,
               PrefetchedPage prepared);
    bool logged(bool isWritten) const;

    std::shared_ptr<const PageSource> m_source;
    std::optional<FileDigest> m_digest;
    QString m_failureReason;
    QString m_failureLine;
};

} // namespace pagestack
