#pragma once

#include "engine/image/PageImage.h"
#include "engine/image/TiffDocument.h"
#include "engine/settings/Settings.h"
#include "tests/support/Bytes.h"
#include "tests/support/ImageReaders.h"

#include <QStringList>
#include <QTemporaryDir>

struct tiff;

namespace pagestack {

/// One page of a test file. Fields hold the values of TIFF 6.0's tags; a tag whose field is 0 or
/// empty is not written.
struct TestPage
{
    /// Fields from words such as "bits=16 orientation=6", resolutions as "xy=204,98", and kinds:
    /// "rgb"; "fax", G4 with white as 0; "jpeg", RGB that is stored as YCbCr. "smooth" gives
    /// samples that a lossy format keeps, "plain=1,2,3" the same ones everywhere.
    TestPage(const char* text = "");

    int width = 47;
    int height = 33;
    int bits = 8;
    int samples = 1;
    int photometric = 1; ///< black is 0
    int format = 0;
    int planes = 1; ///< value of PlanarConfiguration
    int tileWidth = 0;
    int tileHeight = 0;
    int rows = 10; ///< of a strip
    int compression = 1;
    int predictor = 0;
    int fillOrder = 0;
    int orientation = 0;
    int unit = 0; ///< of the resolution
    std::vector<std::uint16_t> extra; ///< kinds of the extra samples
    double xResolution = 0;
    double yResolution = 0;
    QByteArray iccProfile;
    std::vector<std::uint16_t> colorMap; ///< all of red, of green, of blue
    /// Sample `c` of the pixel at x, y; when empty a pattern unlike in x, y and channel.
    std::function<std::uint64_t(int x, int y, int c)> sample;
    std::function<void(tiff*)> moreTags;
    QList<QByteArray> encoded; ///< strips or tiles taken as they are, in place of the samples

    std::uint64_t at(int column, int row, int c) const;
    std::uint64_t top() const { return (std::uint64_t { 1 } << static_cast<unsigned>(bits)) - 1; }
};

/// Writes the pages with libtiff; `mode` is TIFFOpen's: wl or wb for the byte order, 8 for BigTIFF.
/// Ends the test program when that fails.
void writeTiff(const QString& path, const QList<TestPage>& pages, const char* mode = "wl");

/// Which of the four forms a file has.
struct TiffKind
{
    bool isBigEndian = false;
    bool isBigTiff = false;
};

/// An entry whose value fits into it: one number of 32 bits, a list by its offset.
struct TiffEntry
{
    std::uint32_t tag;
    std::uint32_t value;
    std::uint32_t count = 1;
    std::uint32_t type = 4;
};

/// A header, `data` and directories, without libtiff: each directory has the same entries, which
/// may be all wrong, and number i is followed by number next[i], by none for -1.
QByteArray rawTiff(TiffKind kind, const QList<TiffEntry>& entries, const QList<int>& next,
                   const QByteArray& data = {});
/// The numbers 1 to `count` - 1 and -1: directories in their order.
QList<int> oneAfterTheOther(int count);

/// Turns the entry of `tag` of the only page of a little-endian file into one of `newTag` with a
/// 32-bit number.
void patchEntry(const QString& path, unsigned tag, unsigned newTag, unsigned value);

/// An engine's image of a page, from a file "page.tif" in a folder of its own.
class SinglePage
{
public:
    explicit SinglePage(const TestPage& page, const char* mode = "wl");

    QString path(const QString& name) const { return m_folder.filePath(name); }
    QString folder() const { return m_folder.path(); }
    PageImage& image() { return *m_image; }
    bool saves(const QString& name) { return m_image->save(path(name), Settings(nullptr)); }
    /// What is read of the file that is saved under `name`; nothing when that fails.
    Picture saved(const QString& name, int jpegQuality = 10);

private:
    QTemporaryDir m_folder;
    std::unique_ptr<PageImage> m_image;
};

} // namespace pagestack
