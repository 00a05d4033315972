#include "engine/image/TiffDocument.h"
#include "engine/image/pixels/Bitmap.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <lcms2.h>
#include <tiffio.h>

#include <bit>

namespace {

using Expected = double (*)(const TestPage& page, int x, int y, int c);

double asStored(const TestPage& page, int x, int y, int c)
{
    return static_cast<double>(page.at(x, y, c));
}

double inverted(const TestPage& page, int x, int y, int c)
{
    return static_cast<double>(page.top() - page.at(x, y, c));
}

/// To the full range of 8 or 16 bits.
double scaled(const TestPage& page, int x, int y, int c)
{
    const auto top = static_cast<double>(page.top());
    return std::round(asStored(page, x, y, c) * (page.bits > 8 ? 65535 : 255) / top);
}

double fromCmyk(const TestPage& page, int x, int y, int c)
{
    const auto top = static_cast<double>(page.top());
    return std::round((top - asStored(page, x, y, c)) * (top - asStored(page, x, y, 3)) / top);
}

/// 0.5 as floating point.
double half(const TestPage&, int, int, int) { return 32768; }
double white(const TestPage&, int, int, int) { return 255; }
double black(const TestPage&, int, int, int) { return 0; }
double red(const TestPage&, int, int, int c) { return c == 0 ? 255 : 0; }
/// L* 60, a* 40, b* -20.
double violet(const TestPage& page, int, int, int c)
{
    const double rgb[] = { 51163, 29902, 46531 };
    return page.bits == 8 ? std::round(rgb[c] / 257) : rgb[c];
}

struct Case
{
    const char* page = nullptr;
    int channels = 0;
    int bits = 0;
    Expected expected = nullptr;
    double tolerance = 0;
};

/// Depths, kinds of samples and layouts besides these are those of tests/trust/samples.py.
constexpr Case cases[] = {
    { "bits=2", 1, 2, asStored },
    { "bits=1 rows=33 compression=34661", 1, 1, asStored },
    { "bits=1 rows=33 compression=34661 fillOrder=2", 1, 1, asStored },
    { "bits=16 photometric=0", 1, 16, inverted },
    { "bits=12", 1, 16, scaled },
    { "bits=24 plain=66051", 1, 16, scaled },
    { "bits=16 format=3 plain=14336", 1, 16, half },
    { "bits=24 format=3 plain=4063232", 1, 16, half },
    { "fax fillOrder=2", 1, 1, inverted },
    { "fax tileWidth=16 tileHeight=32", 1, 1, inverted },
    { "rgb bits=16 compression=5 predictor=2", 3, 16, asStored },
    { "rgb tileWidth=32 tileHeight=16 planes=2", 3, 8, asStored },
    { "rgb samples=4 extra=2", 4, 8, asStored },
    { "samples=4 photometric=5", 3, 8, fromCmyk },
    { "samples=4 photometric=5 bits=16", 3, 16, fromCmyk },
    { "samples=3 photometric=8 plain=255,0,0", 3, 8, white },
    { "samples=3 photometric=8 plain=0,0,0", 3, 8, black },
    // The red of sRGB seen in D50: L* 54.29, a* 80.81, b* 69.89.
    { "samples=3 photometric=8 plain=138,81,70", 3, 8, red, 3 },
    { "samples=3 photometric=8 plain=153,40,236", 3, 8, violet, 1 },
    { "samples=3 photometric=9 plain=153,168,108", 3, 8, violet, 1 },
    { "samples=3 photometric=8 bits=16 plain=39321,10240,60416", 3, 16, violet, 25 },
    { "jpeg smooth", 3, 8, asStored, 12 },
};

/// A CMYK profile in which cyan is L* 60, a* 40, b* -20 by its colorimetric table and black by
/// the perceptual one.
QByteArray cmykProfile()
{
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 4.3);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    for (const auto tag : { cmsSigAToB0Tag, cmsSigAToB1Tag }) {
        std::array<std::array<cmsUInt16Number, 3>, 16> corners {};
        corners.fill({ 0, 32896, 32896 });
        corners[0] = { 65535, 32896, 32896 };
        if (tag == cmsSigAToB1Tag)
            corners[8] = { 39321, 43176, 27756 };
        cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
        cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 4, nullptr));
        cmsPipelineInsertStage(pipeline, cmsAT_END,
                               cmsStageAllocCLut16bit(nullptr, 2, 4, 3, corners[0].data()));
        cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
        cmsWriteTag(profile, tag, pipeline);
        cmsPipelineFree(pipeline);
    }
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

/// Where the pixel at x, y of the upright picture lies in the stored one.
std::pair<int, int> storedAt(const TestPage& page, int x, int y)
{
    const int right = page.width - 1;
    const int bottom = page.height - 1;
    const std::pair<int, int> at[] = {
        { x, y }, { right - x, y },  { right - x, bottom - y }, { x, bottom - y },
        { y, x }, { y, bottom - x }, { right - y, bottom - x }, { right - y, x },
    };
    return at[std::max(0, page.orientation - 1)];
}

} // namespace

class PageReadingTest : public QObject
{
    Q_OBJECT

private slots:
    void givesThePixelsOfThePage()
    {
        for (const Case& row : cases)
            for (const char* mode : { "wl", "wb" }) {
                const TestPage page(row.page);
                const auto expected
                    = [&](int x, int y, int c) { return row.expected(page, x, y, c); };
                const QString found
                    = difference(SinglePage(page, mode).saved(u"a.png"_s),
                                 { 47, 33, row.channels, row.bits }, expected, row.tolerance);
                QVERIFY2(found.isEmpty(), qPrintable(QLatin1String(row.page) + u": "_s + found));
            }
    }

    void convertsInksByTheProfileOfThePage()
    {
        for (TestPage page : { "samples=4 photometric=5 plain=255,0,0,0",
                               "samples=4 photometric=5 bits=16 plain=65535,0,0,0" }) {
            page.iccProfile = cmykProfile();
            const auto expected = [&](int x, int y, int c) { return violet(page, x, y, c); };
            const Picture picture = SinglePage(page).saved(u"a.png"_s);
            QCOMPARE(
                difference(picture, { 47, 33, 3, page.bits }, expected, page.bits == 8 ? 1 : 257),
                QString());
            page.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_INKSET, INKSET_MULTIINK); };
            QCOMPARE(SinglePage(page).saved(u"a.png"_s).width, 0); // other inks
        }
    }

    void tellsOfPagesOfWhichNextToNothingIsLeft_data()
    {
        // A gray is a whole number of steps up to 249 above the first one. No range: no warning.
        addTextRows(R"(
bits=32 format=3 | 0     | 1     | a.png | 0 and 249,
bits=32 format=3 | 0     | 1e-7  | a.png | 0 and 2.49
bits=32 format=3 | 0     | 0.004 | a.png |
bits=32 format=3 | 0     | 0     | a.jpg |
bits=32 format=3 | 0     | 0.04  | a.jpg | samples lie outside
bits=32          | 2.2e9 | 1     | a.png | 2200000000 and 2200000249,
bits=16 rgb      | 0     | 1     | a.jpg | 0 and 249, and 0 to 65535
bits=16          | 0     | 1     | a.png |
bits=16          | 65200 | 1     | a.jpg |
bits=16 format=2 | 65500 | 1     | a.gif | -36 and 213,
)");
    }

    // Such pages came out all black or all white, without a word.
    void tellsOfPagesOfWhichNextToNothingIsLeft()
    {
        const auto [page, first, step, name, range] = textRow<5>();
        TestPage test(qPrintable(page));
        test.sample = [&, lowest = first.toDouble(),
                       grade = step.toDouble()](int x, int y, int) -> std::uint64_t {
            const double value = lowest + grade * ((x * 7 + y) % 250);
            if (test.format == 3)
                return std::bit_cast<std::uint32_t>(static_cast<float>(value));
            return static_cast<std::uint64_t>(value) & test.top();
        };
        SinglePage single(test);
        QVERIFY(single.saves(name));
        const QStringList warnings = single.image().takeDiagnostics().warnings;
        QCOMPARE(warnings.size(), range.isEmpty() ? 0 : 1);
        QVERIFY2(warnings.value(0).contains(range), qPrintable(warnings.value(0)));
    }

    void looksUpColorsOfPalettes()
    {
        for (const char* text : { "photometric=3 bits=16", "photometric=3 samples=2 extra=2" }) {
            TestPage page(text);
            for (const unsigned step : { 3, 5, 7 })
                for (unsigned i = 0; i <= page.top(); ++i)
                    page.colorMap.push_back(static_cast<std::uint16_t>((i * step & 255) * 257));
            const int channels = page.samples + 2;
            const auto color = [&](int x, int y, int c) {
                const auto index = asStored(page, x, y, c == 3 ? 1 : 0);
                return c == 3 ? index : static_cast<int>(index) * (3 + c * 2) & 255;
            };
            QCOMPARE(difference(SinglePage(page).saved(u"a.png"_s), { 47, 33, channels, 8 }, color),
                     QString());
        }
    }

    void spreadsColorOfSubsampledPages()
    {
        // Blocks of 2 x 2 pixels: four of luminance, one of each colour difference.
        const auto luminance = [](int x, int y) { return 40 + 3 * x + y; };
        const auto blue = [](int x) { return 100 + 2 * (x / 2); };
        const auto red = [](int y) { return 160 - 2 * (y / 2); };
        QByteArray strip;
        for (int y = 0; y < 33; y += 2)
            for (int x = 0; x < 47; x += 2) {
                for (const int i : { 0, 1, 2, 3 })
                    strip.append(static_cast<char>(luminance(x + i % 2, y + i / 2)));
                strip.append(static_cast<char>(blue(x))).append(static_cast<char>(red(y)));
            }
        TestPage page("samples=3 photometric=6 rows=33");
        page.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_YCBCRSUBSAMPLING, 2, 2); };
        page.encoded = { strip };
        QTemporaryDir folder;
        writeTiff(folder.filePath(u"page.tif"_s), { "jpeg smooth", page });
        const TiffDocument document(folder.filePath(u"page.tif"_s));
        const QString png = folder.filePath(u"a.png"_s);
        // libtiff 4.5 mixes up the sizes of subsampled pages after one that it turned into RGB.
        QVERIFY(document.page(0).saveAsPngWithName(png));
        QVERIFY(document.page(1).saveAsPngWithName(png));
        const auto rgb = [&](int x, int y, int c) {
            const double cb = blue(x) - 128;
            const double cr = red(y) - 128;
            const double parts[] = { 1.402 * cr, -0.344136 * cb - 0.714136 * cr, 1.772 * cb };
            return std::min(255.0, std::max(0.0, luminance(x, y) + parts[c]));
        };
        QCOMPARE(difference(readPicture(png), { 47, 33, 3, 8 }, rgb, 2), QString());
    }

    void showsLargePagesWhole_data()
    {
        QTest::addColumn<int>("step");
        for (int i = 2; i <= 8; ++i)
            for (const char* kind : { "bits=1", "bits=2", "bits=4", "rgb bits=16" })
                QTest::addRow("width=203 height=151 %s orientation=%d", kind, i) << 1;
        // More than is kept in memory while it is turned.
        QTest::newRow("width=1710 height=1690 rgb bits=16 orientation=6") << 97;
        // In blocks of eight rows, since they are long.
        QTest::newRow("width=999999 height=9 rows=9 bits=4 orientation=6") << 997;
        // Strips too large to be held.
        for (const int compression : { 5, 8 })
            QTest::addRow("width=2111 height=2077 rows=2077 compression=%d", compression) << 97;
        QTest::newRow("width=2111 height=2077 rows=2077 compression=8 samples=2 extra=2 planes=2")
            << 97;
        QTest::newRow("width=2111 height=2077 tileWidth=2112 tileHeight=2080 compression=8") << 97;
    }

    void showsLargePagesWhole()
    {
        QFETCH(int, step);
        const TestPage page(QTest::currentDataTag());
        const bool isTurned = page.orientation >= 5;
        const std::array shape { isTurned ? page.height : page.width,
                                 isTurned ? page.width : page.height, page.samples, page.bits };
        const auto stored = [&](int x, int y, int c) {
            const auto [column, row] = storedAt(page, x, y);
            return asStored(page, column, row, c);
        };
        QCOMPARE(difference(SinglePage(page).saved(u"a.png"_s), shape, stored, 0, step), QString());
    }

    void makesMonochromeImages()
    {
        TestPage page("rgb samples=4 extra=2 width=2 height=1 orientation=8");
        page.sample = [](int x, int, int c) { return std::array { 255U, 10U, 0U, 9U }.at(c ^ x); };
        SinglePage single(page);
        const PageImage gray = single.image().monochromeImage();
        const auto rows = gray.source().rows();
        const std::uint8_t* samples = rows->nextBand().samples;
        // The second pixel, 10, 255, 9 and alpha 0, is the upper one.
        QCOMPARE(std::vector(samples, samples + 4), (std::vector<std::uint8_t> { 154, 0, 82, 9 }));
        QCOMPARE(gray.heightPx(), 2);

        const Bitmap pixels(1, 3, { ColorModel::Rgb, 8, AlphaKind::Straight, {} },
                            { 0, 0, 0, 77, 1, 0, 1, 8, 2, 0, 0, 9 });
        for (const auto& [threshold, second] : { std::pair(0.0F, 255), { 200.0F, 25 } }) {
            const auto divided = monochromeImageRepWithThreshold(
                pixels, threshold, { 0.1, 0.5, 0.0 }, { 1.0, 0.0, 0.2 }); // 200 is clamped to 1
            const std::vector<std::uint8_t>& made = divided->samples();
            QVERIFY(made.at(0) == 25 && made.at(4) == second && made.at(8) == 255);
            QVERIFY(made.at(1) == 127 && made.at(3) == 77);
        }
        QVERIFY(!createImageWithName(u"../missing"_s) && !createImageWithName(QString()));
    }
};

QTEST_GUILESS_MAIN(PageReadingTest)
#include "PageReadingTest.moc"
