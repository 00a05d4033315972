#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <string>

// libtiff's own name for what it calls TIFF; its header is included by .cpp files only.
struct tiff;

namespace pagestack {

/// What libtiff has to say about one open file. Every message goes to the system log with the
/// file's name, up to a limit; the errors are counted, and the first since `forget` is kept as the
/// reason of a failure.
class TiffMessages
{
public:
    explicit TiffMessages(QString fileName);

    const QString& fileName() const { return m_fileName; }

    void addError(const char* module, const std::string& text);
    void addWarning(const char* module, const std::string& text);

    /// Starts anew: no error so far.
    void forget();

    /// True when an error came, or a warning that tells of pixels that could not be read, since the
    /// last `forget`.
    bool failed() const { return !m_reason.empty(); }

    /// The first of these messages; empty when there is none.
    const std::string& reason() const { return m_reason; }

    /// Throws std::runtime_error with `reason`, or with `fallback` when libtiff gave none.
    [[noreturn]] void fail(const char* fallback) const;

private:
    std::string withoutName(std::string text) const;
    void report(const char* kind, const char* module, const std::string& text);

    QString m_fileName;
    std::string m_reason;
    int m_reported = 0;
};

struct TiffCloser
{
    void operator()(tiff* handle) const noexcept;
};

using TiffHandle = std::unique_ptr<tiff, TiffCloser>;

/// Opens the file for reading, header only: no directory is current yet. The messages go to
/// `messages`, which must outlive the handle; the handle owns `fileDescriptor` from now on, also
/// when opening fails. Throws std::runtime_error with the reason.
TiffHandle openTiffForReading(int fileDescriptor, TiffMessages& messages);

class StagedFile;

/// A TIFF file in the making, of which libtiff writes one page at a time: libtiff sees a file whose
/// header is `header` and whose other bytes are those of `staged`, so that a page's strips and
/// directory land at the end of the staged file with offsets that hold for it.
struct TiffPageSink
{
    StagedFile& staged;
    std::string header; ///< what libtiff wrote into the header; its directory offset is the page's
    std::uint64_t limitBytes; ///< the staged file may not become larger
    bool isFull = false; ///< it would have become larger
    std::string writeError; ///< why the staged file took no more; empty while all is well
};

/// Opens a handle that writes one page into `sink`, little-endian, as BigTIFF if asked.
/// `messages` and `sink` must outlive it. Throws std::runtime_error with the reason.
TiffHandle openTiffPageForWriting(TiffPageSink& sink, bool bigTiff, TiffMessages& messages);

} // namespace pagestack
