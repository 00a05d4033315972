#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/settings/OutputCodes.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <lcms2.h>
#include <tiffio.h>

namespace {

PageTreatment bilevel(Bilevel how, int threshold = 128)
{
    return { .bilevel = how, .threshold = threshold };
}
constexpr PageTreatment toSrgb { .convertsToSrgb = true };

/// A page in a folder of its own, treated.
class Treated
{
public:
    Treated(const TestPage& page, const PageTreatment& treatment)
    {
        writeTiff(path(u"page.tif"_s), { page });
        m_image = TiffDocument(path(u"page.tif"_s), treatment).page(0);
    }
    QString path(const QString& name) const { return m_folder.filePath(name); }
    Picture saved(const QString& name)
    {
        return m_image->save(path(name), Settings(nullptr)) ? readPicture(path(name)) : Picture();
    }
    /// As G4 or, where the page is deeper, without compression.
    TiffPicture savedAsFax()
    {
        MultiPageTiffWriter file(path(u"a.tiff"_s), 2, 1);
        file.append(m_image->sharedSource());
        return file.commit() ? readTiff(path(u"a.tiff"_s)).value(0) : TiffPicture();
    }
    PageImage& image() { return *m_image; }

private:
    QTemporaryDir m_folder;
    std::optional<PageImage> m_image;
};

TestPage made(const QString& text)
{
    TestPage page(qPrintable(text));
    for (int i = 0; page.photometric == 3 && i < 768; ++i)
        page.colorMap.push_back(static_cast<std::uint16_t>((i * 37 + i / 256 * 50) % 256 * 257));
    return page;
}

/// Channel `c` of a pixel as it is shown, of 0 to 255, over white.
double shown(const TestPage& page, int x, int y, int c)
{
    const auto top = static_cast<double>(page.top());
    const auto sample = [&](int channel) { return static_cast<double>(page.at(x, y, channel)); };
    if (page.photometric == 3)
        return page.colorMap[static_cast<std::size_t>(sample(0) + 256 * c)] / 257.0;
    const double value = 255 * sample(page.samples < 3 ? 0 : c) / top;
    const double own = page.photometric == 0 ? 255 - value : value;
    if (page.extra.empty())
        return own;
    const double alpha = sample(page.samples - 1) / top;
    return own * alpha + 255 * (1 - alpha);
}

double luminance(const TestPage& page, int x, int y)
{
    return 0.299 * shown(page, x, y, 0) + 0.587 * shown(page, x, y, 1)
        + 0.114 * shown(page, x, y, 2);
}

double encoded(double linear)
{
    return linear <= 0.0031308 ? 12.92 * linear : 1.055 * std::pow(linear, 1 / 2.4) - 0.055;
}

/// A profile whose samples are as bright as they are large, else as sRGB.
QByteArray profile(const QString& kind)
{
    const cmsCIExyY white { 0.3127, 0.3290, 1 };
    const cmsCIExyYTRIPLE primaries { { 0.64, 0.33, 1 }, { 0.30, 0.60, 1 }, { 0.15, 0.06, 1 } };
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 1);
    const std::array<cmsToneCurve*, 3> curves { curve, curve, curve };
    cmsHPROFILE profile = kind == u"gray" ? cmsCreateGrayProfile(cmsD50_xyY(), curve)
        : kind == u"srgb"                 ? cmsCreate_sRGBProfile()
                                          : cmsCreateRGBProfile(&white, &primaries, curves.data());
    cmsFreeToneCurve(curve);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return kind == u"broken" ? bytes.left(200) : bytes;
}

} // namespace

class PageTreatmentTest : public QObject
{
    Q_OBJECT

private slots:
    void makesPagesBlackAndWhite_data()
    {
        addTextRows({ "page" }, R"(
width=47
photometric=0
bits=4
bits=16
rgb
rgb bits=16 planes=2
rgb samples=4 extra=2
photometric=3
rgb orientation=3
width=64 photometric=0 tileWidth=16 tileHeight=16)");
    }

    // Black for white, a clipped depth, alpha on black, indexes for levels, a lost last byte.
    void makesPagesBlackAndWhite()
    {
        QFETCH(const QString, page);
        const TestPage source = made(page);
        for (const int threshold : { 128, 50 }) {
            Treated treated(source, bilevel(Bilevel::Threshold, threshold));
            const Picture png = treated.saved(u"a.png"_s);
            QCOMPARE(png.bits, 1);
            QCOMPARE(treated.saved(u"a.gif"_s).palette.size(), std::size_t { 2 });
            const TiffPicture fax = treated.savedAsFax();
            QCOMPARE(fax.number(TIFFTAG_COMPRESSION), COMPRESSION_CCITTFAX4);
            QCOMPARE(fax.number(TIFFTAG_PHOTOMETRIC), PHOTOMETRIC_MINISWHITE);
            const int rowBytes = (source.width + 7) / 8;
            for (int y = 0; y < source.height; ++y)
                for (int x = 0; x < source.width; ++x) {
                    const bool isTurned = source.orientation == 3;
                    const int bit = isTurned
                        ? png.at(source.width - 1 - x, source.height - 1 - y, 0)
                        : png.at(x, y, 0);
                    const double level = luminance(source, x, y);
                    if (std::abs(level - threshold + 0.5) > 1) // roundings before it may differ
                        QCOMPARE(bit == 1, level > threshold - 0.5);
                    const auto byte
                        = static_cast<unsigned char>(fax.samples.at(y * rowBytes + x / 8));
                    QCOMPARE((byte >> (7 - x % 8) & 1) == 0, bit == 1);
                }
        }
    }

    void partsLevelsByOtsu()
    {
        TestPage page("width=200");
        for (const int dark : { 20, 90 }) {
            page.sample = [dark](int x, int y, int) {
                return static_cast<std::uint64_t>(x % 3 == 0 ? dark + y % 9 : 180 + x % 20);
            };
            const Picture png = Treated(page, bilevel(Bilevel::Otsu)).saved(u"a.png"_s);
            QCOMPARE(difference(png, { 200, 33, 1, 1 }, [](int x, int, int) { return x % 3 != 0; }),
                     QString());
        }
        page.sample = [](int, int, int) { return 200; }; // nothing to part
        QCOMPARE(Treated(page, bilevel(Bilevel::Otsu)).saved(u"a.png"_s).at(7, 7, 0), 1);
    }

    // Errors that are lost or carried twice change the mean; a threshold would have none.
    void keepsMeansByDithering()
    {
        for (const int level : { 0, 30, 128, 200, 255 }) {
            TestPage page("width=160 height=160");
            page.sample = [level](int, int, int) { return static_cast<std::uint64_t>(level); };
            Treated treated(page, bilevel(Bilevel::Dither));
            const Picture png = treated.saved(u"a.png"_s);
            for (const int first : { 0, 80 }) {
                int whites = 0;
                for (int i = 0; i < 80 * 80; ++i)
                    whites += png.at(first + i % 80, first + i / 80, 0);
                QVERIFY(std::abs(255.0 * whites / 6400 - level) <= (level % 255 == 0 ? 0 : 4));
            }
            QCOMPARE(treated.savedAsFax().number(TIFFTAG_THRESHHOLDING), 3);
        }
    }

    void copiesPagesOneBitDeep()
    {
        for (const char* text : { "fax", "bits=1 compression=4" }) {
            const TestPage page(text);
            Treated treated(page, bilevel(Bilevel::Dither));
            const TiffPicture fax = treated.savedAsFax();
            const TiffPicture source = readTiff(treated.path(u"page.tif"_s)).value(0);
            QVERIFY(!fax.encoded.isEmpty() && fax.encoded == source.encoded);
            QCOMPARE(fax.number(TIFFTAG_PHOTOMETRIC), page.photometric);
        }
    }

    // Pieces that are made ahead could bring the samples back, or other tags.
    void encodesTreatedPagesAhead()
    {
        TestPage page("rgb samples=4 extra=0 compression=5");
        page.iccProfile = profile(u"linear"_s);
        for (const PageTreatment& treatment :
             { bilevel(Bilevel::Otsu), bilevel(Bilevel::Dither), toSrgb })
            for (const int compression : { 1, 2, 3 }) {
                Treated treated(page, treatment);
                QList<QByteArray> files;
                for (const bool isAhead : { false, true }) {
                    const auto source = treated.image().sharedSource();
                    MultiPageTiffWriter file(treated.path(u"a.tiff"_s), compression, 1);
                    const EncodedPieces pieces = isAhead
                        ? encodePieces(*source, tiffCompressionTag(compression))
                        : EncodedPieces();
                    QCOMPARE(bool(pieces.bytes), isAhead);
                    file.append(source, pieces);
                    const PageDiagnostics found = treated.image().takeDiagnostics();
                    QVERIFY(found.changesPixels);
                    QCOMPARE(found.warnings.size(), treatment == toSrgb ? 1 : 0);
                    QCOMPARE(found.remarks.size(), treatment == toSrgb && compression < 3 ? 1 : 0);
                    QVERIFY(file.commit());
                    files.append(bytesOf(treated.path(u"a.tiff"_s)));
                }
                QCOMPARE(files[1], files[0]);
                QVERIFY(!files[0].contains(page.iccProfile));
            }
    }

    void tellsOfFaxCompressionThatDoesNotFit()
    {
        for (const PageTreatment& treatment : { PageTreatment {}, bilevel(Bilevel::Otsu) }) {
            Treated treated("rgb", treatment);
            const bool isDeep = treatment == PageTreatment {};
            QCOMPARE(treated.savedAsFax().number(TIFFTAG_COMPRESSION),
                     isDeep ? COMPRESSION_NONE : COMPRESSION_CCITTFAX4);
            const PageDiagnostics found = treated.image().takeDiagnostics();
            QCOMPARE(found.remarks.join(u' ').contains(u"--bilevel"_s), isDeep);
            QCOMPARE(found.warnings, QStringList());
        }
    }

    void convertsColorsToSrgb_data()
    {
        addTextRows({ "page", "kind" }, R"(
rgb                   | linear
rgb bits=16           | linear
rgb samples=4 extra=2 | linear
samples=2 extra=2     | gray
photometric=3         | linear
width=300             | gray
bits=16               | gray
photometric=0         | gray
rgb                   | srgb
rgb                   | broken)");
    }

    // A profile that is left out, taken twice, or taken for alpha or indexes.
    void convertsColorsToSrgb()
    {
        QFETCH(const QString, page);
        QFETCH(const QString, kind);
        TestPage source = made(page);
        source.iccProfile = profile(kind);
        const bool isConverted = kind == u"linear" || kind == u"gray";
        Treated treated(source, toSrgb);
        const Picture png = treated.saved(u"a.png"_s);
        const double top = png.bits == 16 ? 65535 : 255;
        const auto expected = [&](int x, int y, int c) {
            if (c == source.samples - 1 && !source.extra.empty())
                return static_cast<double>(source.at(x, y, c));
            TestPage opaque = source;
            opaque.extra.clear();
            const double value = shown(opaque, x, y, c) / 255;
            return top * (isConverted ? encoded(value) : value);
        };
        const bool isIndexed = source.photometric == 3;
        if (!isIndexed)
            QCOMPARE(difference(png, { source.width, 33, source.samples, source.bits }, expected,
                                isConverted ? top / 400 : 0),
                     QString());
        for (int x = 0; isIndexed && x < source.width; ++x)
            QVERIFY(std::abs(treated.saved(u"a.gif"_s).colorAt(x, 5, 1) - expected(x, 5, 1)) <= 1);
        if (kind != u"broken") // which the reader drops
            QCOMPARE(png.iccProfile, isConverted ? QByteArray() : source.iccProfile);
        QCOMPARE(bytesOf(treated.path(u"a.png"_s)).contains("sRGB\1"), isConverted);
        QCOMPARE(treated.image().takeDiagnostics().warnings.size(), kind == u"broken" ? 1 : 0);
        const TiffPicture tiff = treated.savedAsFax();
        QCOMPARE(tiff.values(TIFFTAG_ICCPROFILE).isEmpty(), isConverted);
        QCOMPARE(treated.image().takeDiagnostics().warnings.size(), kind == u"broken" ? 1 : 0);
    }

    // BMP and GIF have no place for it.
    void tellsOfDroppedProfiles()
    {
        for (const QString& kind : { u"linear"_s, u"srgb"_s, u"broken"_s, u"none"_s })
            for (const QString& type : { u"bmp"_s, u"gif"_s, u"png"_s, u"jpg"_s }) {
                TestPage page("rgb");
                if (kind != u"none")
                    page.iccProfile = profile(kind);
                Treated treated(page, {});
                QVERIFY(treated.image().save(treated.path(u"a."_s + type), Settings(nullptr)));
                const QStringList told = treated.image().takeDiagnostics().remarks;
                const bool isDropped
                    = kind != u"srgb" && kind != u"none" && (type == u"bmp" || type == u"gif");
                QCOMPARE(told.size(), isDropped ? 1 : 0);
                if (isDropped)
                    QVERIFY(told.front().contains(kind == u"broken" ? u"broken"_s : u"'RGB "_s));
            }
    }
};

QTEST_GUILESS_MAIN(PageTreatmentTest)
#include "PageTreatmentTest.moc"
