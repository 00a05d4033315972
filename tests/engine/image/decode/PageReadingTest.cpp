#include "engine/settings/Settings.h"
#include "tests/support/ImageReaders.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

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

/// Signed samples: the lowest value becomes 0.
double shifted(const TestPage& page, int x, int y, int c)
{
    return static_cast<double>((page.at(x, y, c) + (page.top() + 1) / 2) & page.top());
}

double fromFloat(const TestPage& page, int x, int y, int c)
{
    const std::uint64_t raw = page.at(x, y, c);
    float value = 0;
    std::memcpy(&value, &raw, sizeof value);
    return std::round(std::min(1.0, std::max(0.0, double { value })) * 65535);
}

double unmultiplied(const TestPage& page, int x, int y, int c)
{
    const double alpha = asStored(page, x, y, 3);
    if (c == 3 || alpha == 0)
        return c == 3 ? alpha : 0;
    return std::min(255.0, std::round(asStored(page, x, y, c) * 255 / alpha));
}

double grayAndThirdSample(const TestPage& page, int x, int y, int c)
{
    return asStored(page, x, y, 2 * c);
}

double invertedAndAlpha(const TestPage& page, int x, int y, int c)
{
    return c == 0 ? inverted(page, x, y, c) : asStored(page, x, y, c);
}

double fromCmyk(const TestPage& page, int x, int y, int c)
{
    const auto top = static_cast<double>(page.top());
    return std::round((top - asStored(page, x, y, c)) * (top - asStored(page, x, y, 3)) / top);
}

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

constexpr Case cases[] = {
    { "bits=1", 1, 1, asStored },
    { "bits=2", 1, 2, asStored },
    { "bits=4", 1, 4, asStored },
    { "bits=8", 1, 8, asStored },
    { "bits=16", 1, 16, asStored },
    { "bits=1 photometric=0", 1, 1, inverted },
    { "bits=1 rows=33 compression=34661", 1, 1, asStored },
    { "bits=1 rows=33 compression=34661 fillOrder=2", 1, 1, asStored },
    { "bits=4 photometric=0", 1, 4, inverted },
    { "bits=8 photometric=0", 1, 8, inverted },
    { "bits=16 photometric=0", 1, 16, inverted },
    { "bits=6", 1, 8, scaled },
    { "bits=10", 1, 16, scaled },
    { "bits=12", 1, 16, scaled },
    { "bits=14", 1, 16, scaled },
    { "bits=32", 1, 16, scaled },
    { "bits=8 format=2", 1, 8, shifted },
    { "bits=16 format=2", 1, 16, shifted },
    { "bits=32 format=3", 1, 16, fromFloat },
    { "bits=1 fillOrder=2", 1, 1, asStored },
    { "fax fillOrder=2", 1, 1, inverted },
    { "fax tileWidth=16 tileHeight=32", 1, 1, inverted },
    { "rgb", 3, 8, asStored },
    { "rgb bits=4", 3, 8, scaled },
    { "rgb bits=16 compression=5 predictor=2", 3, 16, asStored },
    { "rgb bits=16 planes=2", 3, 16, asStored },
    { "rgb tileWidth=32 tileHeight=16", 3, 8, asStored },
    { "rgb tileWidth=32 tileHeight=16 planes=2", 3, 8, asStored },
    { "rgb samples=4 extra=0", 3, 8, asStored },
    { "rgb samples=4 extra=1", 4, 8, unmultiplied },
    { "rgb samples=4 extra=2", 4, 8, asStored },
    { "bits=16 samples=3 extra=0,2", 2, 16, grayAndThirdSample },
    { "photometric=0 samples=2 extra=2", 2, 8, invertedAndAlpha },
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

std::vector<std::uint16_t> colorMap(int bits, int factor)
{
    std::vector<std::uint16_t> map;
    for (const int step : { 3, 5, 7 })
        for (int i = 0; i < 1 << bits; ++i)
            map.push_back(static_cast<std::uint16_t>((i * step & 255) * factor));
    return map;
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
    return at[page.orientation - 1];
}

} // namespace

class PageReadingTest : public QObject
{
    Q_OBJECT

private slots:
    void givesThePixelsOfThePage_data()
    {
        QTest::addColumn<int>("index");
        for (std::size_t i = 0; i < std::size(cases); ++i)
            QTest::newRow(cases[i].page) << static_cast<int>(i);
    }

    void tellsOfPagesOfWhichNextToNothingIsLeft_data()
    {
        const auto single = [](float value) {
            return [=](int x, int y, int) -> std::uint64_t {
                return std::bit_cast<std::uint32_t>(value * static_cast<float>((x * 7 + y) % 250));
            };
        };
        const auto number = [](std::uint64_t first) {
            return
                [=](int x, int y, int) { return first + static_cast<unsigned>((x * 7 + y) % 250); };
        };
        using Sample = std::function<std::uint64_t(int, int, int)>;
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<Sample>("sample");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("range"); // that the warning names; empty: no warning
        const QByteArray real("bits=32 format=3");
        QTest::newRow("0 to 249") << real << Sample(single(1)) << u"a.png"_s << u"0 and 249,"_s;
        QTest::newRow("tiny") << real << Sample(single(1e-7F)) << u"a.png"_s << u"0 and 2.49"_s;
        QTest::newRow("0 to 1") << real << Sample(single(1 / 249.0F)) << u"a.png"_s << QString();
        QTest::newRow("blank") << real << Sample(single(0)) << u"a.jpg"_s << QString();
        QTest::newRow("32 bits") << QByteArray("bits=32") << Sample(number(1000)) << u"a.png"_s
                                 << u"1000 and 1249, and 0 to 4294967295"_s;
        QTest::newRow("32 bits, somewhere") << QByteArray("bits=32") << Sample(number(0x80000000U))
                                            << u"a.png"_s << u"2147483648 and 2147483897,"_s;
        QTest::newRow("0 to 100") << real << Sample(single(0.04F)) << u"a.jpg"_s
                                  << u"samples lie outside"_s;
        QTest::newRow("16 bits") << QByteArray("bits=16 rgb") << Sample(number(0)) << u"a.jpg"_s
                                 << u"0 and 249, and 0 to 65535"_s;
        QTest::newRow("16 bits, kept")
            << QByteArray("bits=16") << Sample(number(0)) << u"a.png"_s << QString();
        QTest::newRow("signed") << QByteArray("bits=16 format=2") << Sample(number(65500))
                                << u"a.gif"_s << u"-36 and 213,"_s;
        QTest::newRow("nearly white")
            << QByteArray("bits=16") << Sample(number(65200)) << u"a.jpg"_s << QString();
    }

    // Such pages came out all black or all white, without a word.
    void tellsOfPagesOfWhichNextToNothingIsLeft()
    {
        QFETCH(QByteArray, page);
        QFETCH(QString, name);
        QFETCH(QString, range);
        using Sample = std::function<std::uint64_t(int, int, int)>;
        QFETCH(Sample, sample);
        TestPage test(page.constData());
        test.sample = [=](int x, int y, int c) { return sample(x, y, c) & test.top(); };
        SinglePage single(test);
        QVERIFY(single.image().save(single.path(name), Settings(nullptr)));
        const QStringList warnings = single.image().takeDiagnostics().warnings;
        QCOMPARE(warnings.size(), range.isEmpty() ? 0 : 1);
        QVERIFY2(warnings.value(0).contains(range), qPrintable(warnings.value(0)));
    }

    void givesThePixelsOfThePage()
    {
        QFETCH(int, index);
        const Case& row = cases[index];
        const TestPage page(row.page);
        for (const char* mode : { "wl", "wb" }) {
            SinglePage single(page, mode);
            QVERIFY2(single.image().saveAsPngWithName(single.path(u"a.png"_s)),
                     qPrintable(single.image().failureReason()));
            const auto expected = [&](int x, int y, int c) { return row.expected(page, x, y, c); };
            const Picture picture = readPicture(single.path(u"a.png"_s));
            QCOMPARE(
                difference(picture, { 47, 33, row.channels, row.bits }, expected, row.tolerance),
                QString());
        }
    }

    void looksUpColorsOfPalettes_data()
    {
        QTest::addColumn<int>("bits");
        QTest::addColumn<int>("factor"); // of 8-bit values in the 16-bit map
        QTest::newRow("1 bit") << 1 << 257;
        QTest::newRow("2 bits") << 2 << 257;
        QTest::newRow("4 bits") << 4 << 257;
        QTest::newRow("8 bits") << 8 << 257;
        QTest::newRow("8 bits, zeros in the low bytes") << 8 << 256;
        QTest::newRow("8 bits, 8-bit values in the map") << 8 << 1;
        QTest::newRow("16 bits") << 16 << 257;
    }

    void looksUpColorsOfPalettes()
    {
        QFETCH(int, bits);
        QFETCH(int, factor);
        TestPage page("photometric=3");
        page.bits = bits;
        page.colorMap = colorMap(bits, factor);
        SinglePage single(page);
        for (const QString& name : { u"a.png"_s, u"a.bmp"_s, u"a.gif"_s }) {
            QVERIFY(single.image().save(single.path(name), Settings(nullptr)));
            const Picture picture = readPicture(single.path(name));
            QCOMPARE(picture.width, 47);
            if (bits == 16 && name == u"a.gif"_s)
                continue; // of too many colours to be exact
            QCOMPARE(picture.palette.empty(), bits == 16);
            for (int i = 0; i < 47 * 33 * 3; ++i) {
                const auto index = static_cast<int>(page.at(i / 3 % 47, i / 141, 0));
                QCOMPARE(picture.colorAt(i / 3 % 47, i / 141, i % 3),
                         index * (3 + i % 3 * 2) & 255);
            }
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

    void putsPagesUpright_data()
    {
        QTest::addColumn<QStringList>("rows"); // of the page whose stored rows are abc and def
        const char* const pages[] = { "abc def",  "cba fed",  "fed cba",  "def abc",
                                      "ad be cf", "da eb fc", "fc eb da", "cf be ad" };
        for (int i = 0; i < 8; ++i)
            QTest::addRow("width=3 height=2 orientation=%d", i + 1)
                << QString::fromLatin1(pages[i]).split(u' ');
    }

    void putsPagesUpright()
    {
        QFETCH(QStringList, rows);
        TestPage page(QTest::currentDataTag());
        page.sample = [](int x, int y, int) { return static_cast<std::uint64_t>('a' + x + 3 * y); };
        SinglePage single(page);
        const int width = static_cast<int>(rows[0].size());
        const auto letter
            = [&](int x, int y, int) { return static_cast<double>(rows.at(y).at(x).unicode()); };
        for (const QString& name : { u"a.png"_s, u"a.bmp"_s, u"a.gif"_s }) {
            QVERIFY(single.image().save(single.path(name), Settings(nullptr)));
            const Picture picture = readPicture(single.path(name));
            QCOMPARE(difference(picture, { width, 6 / width, 1, 8 }, letter), QString());
        }
    }

    void putsPagesUprightWhateverTheirSize_data()
    {
        QTest::addColumn<int>("step");
        for (int i = 2; i <= 8; ++i) {
            for (const int bits : { 1, 2, 4 })
                QTest::addRow("width=203 height=151 bits=%d orientation=%d", bits, i) << 1;
            QTest::addRow("width=203 height=151 rgb bits=16 orientation=%d", i) << 1;
        }
        // More than is kept in memory while it is turned.
        for (const int i : { 3, 6, 7 })
            QTest::addRow("width=1710 height=1690 rgb bits=16 orientation=%d", i) << 97;
        // In blocks of eight rows, since they are long.
        for (const int i : { 5, 6 })
            QTest::addRow("width=999999 height=9 rows=9 bits=4 orientation=%d", i) << 997;
    }

    void putsPagesUprightWhateverTheirSize()
    {
        QFETCH(int, step);
        const TestPage page(QTest::currentDataTag());
        SinglePage single(page);
        QVERIFY(single.image().saveAsPngWithName(single.path(u"a.png"_s)));
        const bool isTurned = page.orientation >= 5;
        const std::array shape { isTurned ? page.height : page.width,
                                 isTurned ? page.width : page.height, page.samples, page.bits };
        const auto stored = [&](int x, int y, int c) {
            const auto [column, row] = storedAt(page, x, y);
            return asStored(page, column, row, c);
        };
        QCOMPARE(difference(readPicture(single.path(u"a.png"_s)), shape, stored, 0, step),
                 QString());
    }

    void readsStripsTooLargeToBeHeld()
    {
        for (const char* text : { "width=2111 height=2077 rows=2077 compression=5",
                                  "width=2111 height=2077 rows=2077 compression=8" }) {
            const TestPage page(text);
            SinglePage single(page);
            QVERIFY(single.image().saveAsPngWithName(single.path(u"a.png"_s)));
            const auto stored = [&](int x, int y, int c) { return asStored(page, x, y, c); };
            const Picture picture = readPicture(single.path(u"a.png"_s));
            QCOMPARE(difference(picture, { 2111, 2077, 1, 8 }, stored, 0, 97), QString());
        }
    }
};

QTEST_GUILESS_MAIN(PageReadingTest)
#include "PageReadingTest.moc"
