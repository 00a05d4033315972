#include "engine/image/formats/Encoders.h"
#include "engine/image/pixels/Bitmap.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <lcms2.h>
#include <tiffio.h>

namespace {

/// Green and blue are 0 unless all are grays.
std::vector<std::uint16_t> colorMap(bool isGray)
{
    std::vector<std::uint16_t> map;
    for (int i = 0; i < 768; ++i)
        map.push_back(static_cast<std::uint16_t>(i < 256 || isGray ? i % 256 * 257 : 0));
    return map;
}

/// An ICC profile of `kind` "gray", "rgb" or "large", which is more than a JPEG segment holds.
QByteArray profile(const QString& kind)
{
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    cmsHPROFILE made
        = kind == u"gray" ? cmsCreateGrayProfile(cmsD50_xyY(), curve) : cmsCreate_sRGBProfile();
    cmsFreeToneCurve(curve);
    QByteArray ballast("data\0\0\0\0", 8);
    for (int i = 0; kind == u"large" && i < 150'000; ++i)
        ballast.append(static_cast<char>(i * i));
    cmsWriteRawTag(made, static_cast<cmsTagSignature>(0x62616c6c), ballast.constData(),
                   static_cast<cmsUInt32Number>(ballast.size()));
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(made, nullptr, &size);
    QByteArray bytes(static_cast<qsizetype>(size), '\0');
    cmsSaveProfileToMem(made, bytes.data(), &size);
    cmsCloseProfile(made);
    return bytes;
}

Picture saved(const TestPage& page, const QString& name, int quality = 10)
{
    return SinglePage(page).saved(name, quality);
}

} // namespace

class ImageWritersTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsDepthAndChannels()
    {
        for (const char* text :
             { "bits=1", "fax", "bits=4", "", "bits=16", "rgb", "rgb bits=16" }) {
            TestPage page(text);
            const auto check = [&](const QString& name, int bits, double tolerance) {
                const auto expected = [&, full = (1 << bits) - 1](int x, int y, int c) {
                    const auto top = static_cast<double>(page.top());
                    const auto value = static_cast<double>(page.at(x, y, c));
                    return std::round((page.photometric == 0 ? top - value : value) * full / top);
                };
                QCOMPARE(difference(saved(page, name), { 47, 33, page.samples, bits }, expected,
                                    tolerance),
                         QString());
            };
            check(u"a.png"_s, page.bits, 0);
            const TestPage smooth("smooth");
            if (page.bits >= 8) // what a lossy format keeps
                page.sample = [&](int x, int y, int c) {
                    return smooth.at(x, y, c) * (page.bits == 16 ? 257 : 1);
                };
            check(u"a.jpg"_s, 8, page.bits < 8 ? 24 : 6);
        }
    }

    // The last row first, blue before red, and zeros that fill up a row.
    void writesBmp()
    {
        const std::pair<const char*, const char*> files[] = {
            { "width=3 height=2 bits=1 photometric=0 xy=204,98 unit=2",
              "424d46000000000000003e000000280000000300000002000000010001000000000008000000"
              "5f1f0000120f0000020000000000000000000000ffffff0040000000c0000000" },
            { "width=3 height=2 rgb",
              "424d4e0000000000000036000000280000000300000002000000010018000000000018000000"
              "0000000000000000000000000000000063380d683d126d4217000000562b005b300560350a000000" },
        };
        for (const auto& [page, bytes] : files) {
            SinglePage single(page);
            QVERIFY(single.saves(u"a.bmp"_s));
            QCOMPARE(bytesOf(single.path(u"a.bmp"_s)).toHex(), QByteArray(bytes));
        }
    }

    void keepsResolution_data()
    {
        // The density in JPEG; that in PNG.
        addTextRows(R"(
xy=204,98 unit=2        | 1 204 98  | 1 8031 3858
xy=299.6,150.4 unit=2   | 1 300 150 | 1 11795 5921
xy=118,59 unit=3        | 2 118 59  | 1 11800 5900
xy=2,1 unit=1           | 0 2 1     | 0 2 1
xy=96,96 unit=1         | 0 1 1     | none
                        | 0 1 1     | none
xy=204,98 orientation=5 | 1 98 204  | 1 3858 8031
)");
    }

    void keepsResolution()
    {
        const auto [page, jpeg, png] = textRow<3>();
        const auto density = [text = page](const QString& name) {
            const auto [unit, x, y] = saved(qPrintable(text), name).density;
            return unit < 0 ? u"none"_s : u"%1 %2 %3"_s.arg(unit).arg(x).arg(y);
        };
        QCOMPARE(density(u"a.jpg"_s), jpeg);
        QCOMPARE(density(u"a.png"_s), png);
    }

    void keepsProfilesThatFit_data()
    {
        // A palette of grays is gray in JPEG, and inks are converted.
        addTextRows(R"(
rgb                     |        | rgb   | png jpg
rgb                     |        | large | png jpg
                        |        | gray  | png jpg
photometric=3           | colors | rgb   | png jpg
photometric=3           | grays  | rgb   | png
                        |        | rgb   |
rgb                     |        | gray  |
samples=4 photometric=5 |        | rgb   |
)");
    }

    void keepsProfilesThatFit()
    {
        const auto [page, map, kind, kept] = textRow<4>();
        TestPage made(qPrintable(page));
        made.iccProfile = profile(kind);
        if (made.photometric == 3)
            made.colorMap = colorMap(map == u"grays");
        for (const QString& type : { u"png"_s, u"jpg"_s }) {
            const Picture picture = saved(made, u"a."_s + type);
            QCOMPARE(picture.width, 47);
            QVERIFY(picture.iccProfile == (kept.contains(type) ? made.iccProfile : QByteArray()));
        }
        SinglePage single(made);
        QVERIFY(single.image().saveAsTiffWithName(single.path(u"a.tiff"_s), 3));
        QVERIFY(bytesOf(single.path(u"a.tiff"_s)).contains(made.iccProfile));
    }

    void laysTransparentPixelsOverWhite()
    {
        for (const char* text :
             { "rgb samples=4 smooth extra=1", "rgb samples=4 smooth extra=2",
               "rgb samples=4 smooth extra=1 bits=16", "rgb samples=4 smooth extra=2 bits=16" }) {
            const TestPage smooth(text);
            const auto flat = [&](int x, int y, int c) {
                const auto color = static_cast<double>(smooth.at(x, y, c));
                const double alpha = static_cast<double>(smooth.at(x, y, 3)) / 255;
                const double own = smooth.extra[0] == 1 ? color : color * alpha;
                return std::min(255.0, own + 255 * (1 - alpha));
            };
            TestPage page = smooth;
            page.sample = [&](int x, int y, int c) {
                return smooth.at(x, y, c) * (page.bits == 16 ? 257 : 1);
            };
            QCOMPARE(difference(saved(page, u"a.jpg"_s), { 47, 33, 3, 8 }, flat, 14), QString());
        }
    }

    void keepsOneTransparentColorInGif()
    {
        TestPage page("samples=2 extra=2");
        page.sample = [](int x, int y, int c) { return c == 0 ? 100 + x % 3 : 7 * y; };
        const Picture gif = saved(page, u"a.gif"_s);
        QCOMPARE(gif.width, 47);
        QVERIFY(gif.transparentIndex >= 0);
        for (int y = 0; y < 33; ++y)
            for (int x = 0; x < 47; ++x) {
                const int alpha = 7 * y;
                QCOMPARE(gif.at(x, y, 0) == gif.transparentIndex, alpha < 128);
                const double wanted = (100 + x % 3) * alpha / 255.0 + 255 - alpha;
                QVERIFY(alpha < 128 || std::abs(gif.colorAt(x, y, 0) - wanted) <= 1);
            }
        // Opaque throughout: no colour is given away.
        QCOMPARE(saved("samples=2 extra=2 plain=9,255", u"a.gif"_s).transparentIndex, -1);
    }

    void keepsUpTo256ColorsInGifAndReducesMore()
    {
        TestPage exact("rgb");
        TestPage few("rgb");
        for (const auto& [page, colors] : { std::pair(&exact, 256), { &few, 257 } })
            page->sample = [count = colors](int x, int y, int c) {
                const int color = (x + 47 * y) % count;
                return c == 0 ? color & 255 : color >> 8;
            };
        TestPage many("rgb width=130 height=90");
        many.sample = [](int x, int y, int c) {
            return std::array { 255 * x / 129, 255 * y / 89, 255 - x - y }.at(c);
        };
        for (const auto& [page, mostError] :
             { std::pair(exact, 0.001), std::pair(few, 1.0), std::pair(many, 5.0) }) {
            SinglePage single(page);
            QVERIFY(single.image().saveAsGifWithName(single.path(u"a.gif"_s)));
            const Picture gif = readPicture(single.path(u"a.gif"_s));
            QCOMPARE(gif.width, page.width);
            double sum = 0;
            for (int y = 0; y < page.height; ++y)
                for (int x = 0; x < page.width; ++x)
                    for (int c = 0; c < 3; ++c)
                        sum += std::abs(gif.colorAt(x, y, c)
                                        - static_cast<double>(page.at(x, y, c)));
            const double mean = sum / (3.0 * page.width * page.height);
            QVERIFY2(mean < mostError, qPrintable(QString::number(mean)));
            const std::set<int> used(gif.samples.begin(), gif.samples.end());
            QVERIFY(page.width == 47 || used.size() == 256);
        }
    }

    void samplesColorOfJpegByQuality()
    {
        const TestPage page("rgb smooth");
        const auto expected
            = [&](int x, int y, int c) { return static_cast<double>(page.at(x, y, c)); };
        for (const auto& [quality, sampling, tolerance] :
             { std::tuple(10, 1, 5.0), { 9, 2, 20.0 }, { 0, 2, 200.0 } }) {
            const Picture jpeg = saved(page, u"a.jpg"_s, quality);
            QCOMPARE(jpeg.sampling, (std::array { sampling, sampling }));
            QCOMPARE(difference(jpeg, { 47, 33, 3, 8 }, expected, tolerance), QString());
        }
        // Others are those of the ends of the scale.
        for (const auto& [quality, end] : { std::pair(-5, 0), { 99, 10 } })
            QVERIFY(saved(page, u"a.jpg"_s, quality).samples
                    == saved(page, u"a.jpg"_s, end).samples);
    }

    void writesByTheExactExtension()
    {
        SinglePage single("");
        for (const QString& name : { u"a.JPG"_s, u"a.tif"_s, u"png"_s, u"a."_s })
            QVERIFY(!single.saves(name) && !single.image().failureReason().isEmpty());
        QCOMPARE(namesIn(single.folder()).size(), 1);
    }

    void refusesWhatTheFormatCannotHold()
    {
        for (const char* text : { "width=70000 height=1", "width=1 height=70000 orientation=6",
                                  "width=2000000 height=20000 rows=20000 fax" }) {
            TestPage page(text);
            const bool isHuge = page.compression == 4;
            if (isHuge)
                page.encoded = { QByteArray(5'100'000, '\xFF') }; // each row is like the one above
            SinglePage single(page);
            for (const QString& name :
                 isHuge ? QStringList { u"a.bmp"_s } : QStringList { u"a.jpg"_s, u"a.gif"_s }) {
                QVERIFY(!single.saves(name));
                QVERIFY2(single.image().failureReason().contains(u"too large for"_s),
                         qPrintable(single.image().failureReason()));
            }
            QCOMPARE(namesIn(single.folder()), QStringList { u"page.tif"_s });
            if (!isHuge)
                QCOMPARE(single.saved(u"a.png"_s).samples.size(), std::size_t { 70000 });
        }
    }

    void refusesProfilesTooLargeForJpeg()
    {
        for (const qsizetype segments : { 255, 256 }) {
            TestPage page("rgb");
            page.iccProfile = profile(u"rgb"_s).leftJustified(segments * 65'519, '\0');
            SinglePage single(page);
            const QString path = single.path(u"a.jpg"_s);
            QCOMPARE(single.image().saveAsJpegWithName(path, 10), segments == 255);
            if (segments == 255)
                QVERIFY(readPicture(path).iccProfile == page.iccProfile);
        }
    }

    /// As where the source is written to between the passes.
    void refusesGifColorsThatCameLater()
    {
        PixelLayout layout;
        layout.model = ColorModel::Rgb;
        for (const auto later : std::initializer_list<std::uint8_t> { 0, 9, 200 }) {
            Bitmap first(2, 1, layout, { 5, 5, 5, 9, 9, 9 });
            Bitmap second(2, 1, layout, { 5, 5, 5, later, later, later });
            QTemporaryDir folder;
            StagedFile file(folder.filePath(u"a.gif"_s));
            UprightPage page;
            page.rows = first.rows();
            page.startPass = [&] { return second.rows(); };
            const auto encode = [&] { encodeGif(page, file); };
            if (later == 9)
                encode();
            else
                QVERIFY_THROWS_EXCEPTION(std::runtime_error, encode());
        }
    }
};

QTEST_GUILESS_MAIN(ImageWritersTest)
#include "ImageWritersTest.moc"
