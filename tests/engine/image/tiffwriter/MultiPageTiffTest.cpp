#include "engine/image/pixels/Bitmap.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/settings/OutputCodes.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <tiffio.h>

#include <functional>
#include <new>
#include <thread>

namespace {

constexpr std::uint64_t classicLimit = MultiPageTiffWriter::classicLimitBytes;

/// A page that cannot be made smaller.
TestPage noise()
{
    TestPage page("bits=1 photometric=0");
    page.sample = [](int x, int y, int) { return (x + y) & 1; };
    return page;
}

/// A gray page for whose rows there is no memory any more once it `isShort`.
class ShortOfMemory : public PageSource
{
public:
    const PageProperties& properties() const override { return m_bitmap.properties(); }
    std::unique_ptr<RowSource> rowsShownIn(int bits, SharedWork* work) const override
    {
        if (isShort)
            throw std::bad_alloc();
        return m_bitmap.rowsShownIn(bits, work);
    }

    bool isShort = false;

private:
    Bitmap m_bitmap { 40, 40, {}, std::vector<std::uint8_t>(1600) };
};

/// The tags without those that tell how the pixels lie in the file.
std::map<int, QList<double>> describing(const TiffPicture& page)
{
    std::map<int, QList<double>> tags = page.tags;
    for (const int tag : { TIFFTAG_COMPRESSION, TIFFTAG_PREDICTOR, TIFFTAG_STRIPOFFSETS,
                           TIFFTAG_STRIPBYTECOUNTS, TIFFTAG_ROWSPERSTRIP, TIFFTAG_TILEOFFSETS,
                           TIFFTAG_TILEBYTECOUNTS, TIFFTAG_PAGENUMBER, TIFFTAG_GROUP3OPTIONS,
                           TIFFTAG_JPEGTABLES, TIFFTAG_REFERENCEBLACKWHITE, TIFFTAG_FILLORDER })
        tags.erase(tag);
    return tags;
}

/// Those of each page; one of no samples is left out.
QByteArrayList samplesOf(const QString& path)
{
    QByteArrayList samples;
    for (const TiffPicture& page : readTiff(path))
        samples.append(page.samples);
    samples.removeAll({});
    return samples;
}

} // namespace

class MultiPageTiffTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsTheSamplesOfEveryKindOfPage()
    {
        TestPage palette("bits=4 photometric=3");
        palette.colorMap.assign(48, 771);
        TestPage subsampled("width=4 height=4 samples=3 photometric=6");
        subsampled.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_YCBCRSUBSAMPLING, 2, 2); };
        subsampled.encoded = { "abcdefghijklmnopqrstuvwx" };
        TestPage wide = noise(); // libtiff itself could not read it: its table of runs was short
        wide.width = 64;
        const QList<TestPage> pages {
            "fax",
            "bits=1 compression=3 orientation=6",
            "",
            "rgb bits=16 compression=5 predictor=2",
            "bits=12 photometric=0",
            "bits=32 format=3 compression=32773",
            palette,
            "rgb samples=4 planes=2 extra=1",
            "rgb tileWidth=32 tileHeight=16",
            "fax tileWidth=16 tileHeight=32",
            "samples=4 photometric=5 compression=8",
            "jpeg",
            subsampled,
            wide,
        };
        const QSet<qsizetype> differenced { 2, 3, 7, 8, 10, 11 }; // by LZW: samples of 8 or 16 bits
        for (int run = 0; run < 18; ++run) {
            const int index = run / 3 - 1;
            const int compression = QList { 1, 1, 3, 4, 5, 32773 }.at(index + 1);
            const char* const mode = std::array { "wl", "wb", "wb8" }.at(run % 3);
            QVERIFY2(collect(pages, index, mode), QByteArray::number(run));
            const QList<TiffPicture> written = readTiff(m_out);
            const QList<TiffPicture> source = readTiff(m_source);
            QCOMPARE(written.size(), pages.size());
            for (qsizetype i = 0; i < pages.size(); ++i) {
                const QByteArray what = QByteArray::number(run) + ", page " + QByteArray::number(i);
                const bool isFax = compression == 3 || compression == 4;
                QCOMPARE(written[i].number(TIFFTAG_COMPRESSION),
                         isFax && pages[i].bits != 1 ? 1 : compression);
                QCOMPARE(written[i].number(TIFFTAG_PREDICTOR),
                         compression == 5 && differenced.contains(i) ? 2 : -1);
                std::map<int, QList<double>> tags = describing(source[i]);
                if (pages[i].compression == 7)
                    tags[TIFFTAG_PHOTOMETRIC] = { 2 };
                tags[TIFFTAG_ORIENTATION] = { std::max(1.0, 1.0 * pages[i].orientation) };
                tags[TIFFTAG_SUBFILETYPE] = { FILETYPE_PAGE };
                QCOMPARE(describing(written[i]), tags);
                QVERIFY2(written[i].samples == source[i].samples && !source[i].samples.isEmpty(),
                         what);
                if (written[i].number(TIFFTAG_COMPRESSION) == 1)
                    QCOMPARE(written[i].encoded.size(), source[i].samples.size());
            }
        }
    }

    void copiesEncodedPiecesThatFit()
    {
        for (const auto& [text, index] :
             { std::pair("rgb compression=5 predictor=2", 3),
               { "tileWidth=16 tileHeight=16 compression=5", 3 },
               { "fax", 2 },
               { "fax fillOrder=2", 2 },
               { "bits=1 compression=3", 1 },
               { "compression=32773", 4 },
               // More than is copied at a time.
               { "width=2400 height=2000 rows=2000 compression=32773", 4 } }) {
            TestPage page(text);
            if (page.compression == 3)
                page.moreTags = [](tiff* to) {
                    TIFFSetField(to, TIFFTAG_GROUP3OPTIONS,
                                 GROUP3OPT_2DENCODING | GROUP3OPT_FILLBITS);
                };
            QVERIFY2(collect({ page }, index), text);
            QVERIFY2(readTiff(m_out).value(0).encoded == readTiff(m_source).value(0).encoded, text);
            QCOMPARE(samplesOf(m_out), samplesOf(m_source));
            QCOMPARE(samplesOf(m_out).size(), 1);
        }
    }

    // JPEG pages became larger and were decoded, Deflate lost its predictor, a page without
    // compression got one, or what cannot be copied stayed in an order of bits of long ago.
    void keepsCompressionsThatCanBeCopied()
    {
        PageTreatment keeping;
        keeping.keepsCompression = true;
        const QList<TestPage> pages { "jpeg",
                                      "jpeg tileWidth=32 tileHeight=16",
                                      "compression=7 rows=16",
                                      "rgb compression=8 predictor=2",
                                      "fax",
                                      "compression=32773",
                                      "bits=16" };
        for (const char* const mode : { "wl", "wb" }) {
            QVERIFY(collect(pages, 3, mode, classicLimit, keeping));
            const QList<TiffPicture> written = readTiff(m_out);
            const QList<TiffPicture> source = readTiff(m_source);
            QCOMPARE(written.size(), pages.size());
            for (qsizetype i = 0; i < pages.size(); ++i) {
                QCOMPARE(written[i].number(TIFFTAG_COMPRESSION), pages[i].compression);
                QCOMPARE(written[i].number(TIFFTAG_PREDICTOR), i == 3 ? 2 : -1);
                QVERIFY(written[i].encoded == source[i].encoded || pages[i].bits == 16);
                QVERIFY2(written[i].samples == source[i].samples && !source[i].samples.isEmpty(),
                         QByteArray::number(i));
                QCOMPARE(written[i].number(TIFFTAG_PHOTOMETRIC),
                         source[i].number(TIFFTAG_PHOTOMETRIC));
            }
        }
        // What JPEG data say beside their pixels was handed on.
        keeping.stripsMetadata = true;
        QVERIFY(collect({ "jpeg" }, 4, "wl", classicLimit, keeping));
        QCOMPARE(readTiff(m_out)[0].number(TIFFTAG_COMPRESSION), 32773);
        TestPage old("width=1 height=1 compression=5");
        old.encoded = { QByteArray::fromHex("00b50404") };
        QVERIFY(collect({ old }, 4, "wl", classicLimit, keeping));
        QCOMPARE(readTiff(m_out)[0].number(TIFFTAG_COMPRESSION), 32773);
        QCOMPARE(samplesOf(m_out), samplesOf(m_source));
    }

    static TestPage describedFax()
    {
        TestPage page("fax rows=40 fillOrder=2 orientation=6 xy=300,200 unit=2");
        page.moreTags = [](tiff* to) {
            TIFFSetField(to, TIFFTAG_SUBFILETYPE, FILETYPE_MASK);
            TIFFSetField(to, TIFFTAG_DOCUMENTNAME, "two");
            TIFFSetField(to, TIFFTAG_SOFTWARE, "of an odd length");
            TIFFSetField(to, TIFFTAG_DATETIME, "2001:02:03 04:05:06");
            TIFFSetField(to, TIFFTAG_COPYRIGHT, "c");
            TIFFSetField(to, TIFFTAG_PAGENUMBER, 4, 9);
            TIFFSetField(to, TIFFTAG_ROWSPERSTRIP, 4'000'000'000U);
        };
        return page;
    }

    // The directory of a page that is copied without libtiff lacked tags or had other values than
    // libtiff gives them.
    void describesCopiedPagesAsLibtiffDoes()
    {
        const TestPage described = describedFax();
        const auto sampled = [](const char* text, int across, int down) {
            TestPage page(text);
            page.moreTags = [=](tiff* to) {
                const float range[] = { 0, 255, 128, 255, 128, 255 };
                TIFFSetField(to, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
                TIFFSetField(to, TIFFTAG_YCBCRSUBSAMPLING, across, down);
                TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0);
                TIFFSetField(to, TIFFTAG_YCBCRPOSITIONING, 2);
                TIFFSetField(to, TIFFTAG_REFERENCEBLACKWHITE, range);
            };
            return page;
        };
        const QList<TestPage> pages {
            described,
            "jpeg",
            "jpeg width=300 rows=32",
            "compression=7 rows=16",
            "rgb compression=7 rows=16",
            sampled("jpeg width=300", 1, 1),
            sampled("jpeg", 2, 1),
            "rgb compression=5 predictor=2 format=1",
            "rgb bits=16 compression=8 xy=72,72 unit=3",
            "width=6553 compression=5 rows=1",
            "width=6552 compression=5 rows=1",
            "compression=32773 xy=204,98",
            "rgb rows=1 xy=72,72",
            "width=70000 height=3 rows=3",
            "width=70000 height=3 rows=1",
            "bits=16 format=1",
            "bits=1 fillOrder=2",
            "rgb tileWidth=32 tileHeight=16 compression=5 predictor=2",
            "width=300 tileWidth=80 tileHeight=80 compression=8",
            "width=300 height=20 tileWidth=96 tileHeight=80 compression=8",
            "fax tileWidth=64 tileHeight=32",
            "rgb tileWidth=32 tileHeight=16",
            sampled("jpeg width=300 tileWidth=32 tileHeight=32", 2, 2),
            "bits=1 compression=3 xy=203.5,98"
        };
        PageTreatment byLibtiff;
        byLibtiff.keepsCompression = true;
        for (const bool isStripped : { false, true })
            for (const char* const mode : { "wl", "wb" })
                for (const QList<TestPage>& some : { pages, { described } }) {
                    byLibtiff.stripsMetadata = isStripped;
                    byLibtiff.expectedDpi = 0;
                    QVERIFY(collect(some, 0, mode, classicLimit, byLibtiff));
                    const QList<TiffPicture> copied = readTiff(m_out);
                    byLibtiff.expectedDpi = 300; // which only libtiff's way looks at
                    QVERIFY(collect(some, 0, mode, classicLimit, byLibtiff));
                    const QList<TiffPicture> wanted = readTiff(m_out);
                    QCOMPARE(copied.size(), some.size());
                    for (qsizetype i = 0; i < some.size(); ++i) {
                        QCOMPARE(copied[i].tags, wanted[i].tags);
                        QVERIFY(copied[i].samples == wanted[i].samples);
                        QVERIFY(copied[i].encoded == wanted[i].encoded);
                    }
                }
    }

    // So did that of a page that is encoded ahead.
    void describesEncodedPagesAsLibtiffDoes()
    {
        TestPage withOptions("bits=1 compression=3 xy=203.5,98");
        withOptions.moreTags = [](tiff* to) {
            TIFFSetField(to, TIFFTAG_XRESOLUTION, 204.0);
            TIFFSetField(to, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
        };
        const QList<TestPage> pages { describedFax(),
                                      withOptions,
                                      "rgb compression=5 predictor=2 format=1 rows=1",
                                      "rgb bits=16 compression=8 xy=72,72 unit=3",
                                      "width=70000 height=3 rows=3",
                                      "width=3000 height=90 compression=8 rows=7",
                                      "rgb compression=7 rows=16",
                                      "rgb tileWidth=32 tileHeight=16 compression=8" };
        for (const char* const mode : { "wl", "wb" })
            for (const int compression : { 0, 2, 3, 4 }) {
                writeTiff(m_source, pages, mode);
                const TiffDocument source(m_source);
                const auto written = [&](bool isAhead) {
                    MultiPageTiffWriter file(m_out, compression, static_cast<int>(pages.size()));
                    for (int i = 0; i < pages.size(); ++i) {
                        const auto page = source.page(i).sharedSource();
                        file.append(page,
                                    isAhead ? encodePieces(*page, tiffCompressionTag(compression))
                                            : EncodedPieces());
                    }
                    return file.commit() ? bytesOf(m_out) : QByteArray();
                };
                const QByteArray wanted = written(false);
                QVERIFY(!wanted.isEmpty());
                QVERIFY(written(true) == wanted);
            }
    }

    void encodesAnewWhatOthersCouldNotRead()
    {
        // One pixel in LZW codes of which the lowest bit comes first, as before TIFF 5.0: the start
        // of a table, the sample, the end, nine bits each.
        TestPage page("width=1 height=1 compression=5");
        page.encoded = { QByteArray::fromHex("00b50404") };
        QVERIFY(collect({ page }, 3));
        QCOMPARE(samplesOf(m_out), samplesOf(m_source));
        QCOMPARE(samplesOf(m_out).size(), 1);
        QVERIFY(readTiff(m_out)[0].encoded.startsWith('\x80')); // 256, the highest bit first
    }

    void carriesWhatDescribesThePage()
    {
        TestPage page("rgb orientation=8 xy=204,98 unit=3");
        page.iccProfile = QByteArray(300, 'p');
        page.moreTags = [](tiff* to) {
            for (const int tag :
                 { TIFFTAG_ARTIST, TIFFTAG_PAGENAME, TIFFTAG_DOCUMENTNAME, TIFFTAG_MAKE,
                   TIFFTAG_MODEL, TIFFTAG_SOFTWARE, TIFFTAG_HOSTCOMPUTER, TIFFTAG_COPYRIGHT,
                   TIFFTAG_TARGETPRINTER, TIFFTAG_IMAGEDESCRIPTION })
                TIFFSetField(to, static_cast<ttag_t>(tag), qUtf8Printable(u"Grüße %1"_s.arg(tag)));
            TIFFSetField(to, TIFFTAG_DATETIME, "2001:02:03 04:05:06");
            TIFFSetField(to, TIFFTAG_XMLPACKET, 9, "<x:xmp/>\n");
            float numbers[] = { 0.25F, 0.5F, 0.75F, 1, 0.125F, 2 };
            TIFFSetField(to, TIFFTAG_WHITEPOINT, numbers);
            TIFFSetField(to, TIFFTAG_PRIMARYCHROMATICITIES, numbers);
            TIFFSetField(to, TIFFTAG_DOTRANGE, 5, 250);
        };
        TestPage packed = page;
        packed.compression = 5;
        QVERIFY(collect({ page, packed, "" }, 3)); // encoded anew, copied, and without all of it
        const QList<TiffPicture> written = readTiff(m_out);
        const QList<TiffPicture> source = readTiff(m_source);
        QCOMPARE(written.size(), 3);
        for (const auto& [tag, values] : describing(source[0])) {
            QVERIFY2(written[0].values(tag) == values, QByteArray::number(tag));
            QVERIFY2(written[1].values(tag) == values, QByteArray::number(tag));
        }
        QCOMPARE(describing(written[2]).size(), describing(source[2]).size() + 2); // said of all
    }

    // Tags were lost without a word, and all but the first text of those that hold several.
    void tellsWhatItLeavesOut()
    {
        TestPage page("compression=5");
        page.moreTags = [](tiff* to) {
            TIFFSetField(to, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
            TIFFSetField(to, TIFFTAG_COPYRIGHT, "photographer editor");
            TIFFSetField(to, TIFFTAG_ARTIST, "a b");
            TIFFSetField(to, TIFFTAG_MINSAMPLEVALUE, 7);
            TIFFSetField(to, TIFFTAG_IMAGESOURCEDATA, 6, "layers");
        };
        writeTiff(m_source, { page });
        putBytes(m_source,
                 bytesOf(m_source)
                     .replace("r e", QByteArray("r\0e", 3))
                     .replace("a b", QByteArray("a\0b", 3)));
        for (const int compressionIndex : { 0, 3 }) {
            QCOMPARE(leftOutOf(compressionIndex), QStringList { u"ImageSourceData"_s });
            QVERIFY(bytesOf(m_out).contains(QByteArray("photographer\0editor\0", 20)));
            QVERIFY(bytesOf(m_out).contains(QByteArray("a\0b\0", 4)));
            QCOMPARE(readTiff(m_out).value(0).number(TIFFTAG_SUBFILETYPE), FILETYPE_REDUCEDIMAGE);
        }
    }

    // libtiff tells of one direction as it does of both, and knows no SubfileType of old files;
    // JPEG data have no such range.
    void altersNoTagInSilence()
    {
        for (const char* text : { "rgb", "jpeg tileWidth=32 tileHeight=32" }) {
            TestPage page(text);
            const ttag_t given = page.tileWidth > 0 ? TIFFTAG_XRESOLUTION : TIFFTAG_YRESOLUTION;
            page.moreTags = [given](tiff* to) {
                float range[] = { 16, 235, 128, 240, 128, 240 };
                TIFFSetField(to, TIFFTAG_REFERENCEBLACKWHITE, range);
                TIFFSetField(to, given, 300.0);
                TIFFSetField(to, TIFFTAG_SUBFILETYPE, FILETYPE_MASK);
                if (TIFFIsTiled(to) != 0)
                    TIFFSetField(to, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            };
            writeTiff(m_source, { page });
            patchEntry(m_source, TIFFTAG_SUBFILETYPE, TIFFTAG_OSUBFILETYPE, OFILETYPE_REDUCEDIMAGE);
            QCOMPARE(leftOutOf(0).join(u' '),
                     page.tileWidth > 0 ? u"ReferenceBlackWhite"_s : u""_s);
            const TiffPicture copy = readTiff(m_out).value(0);
            for (const int tag : { TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION })
                QCOMPARE(copy.values(tag), readTiff(m_source)[0].values(given));
            QCOMPARE(copy.number(TIFFTAG_SUBFILETYPE), FILETYPE_REDUCEDIMAGE);
        }
    }

    void keepsTheBytesOfIptcThatLibtiffTurnsRound()
    {
        const QByteArray caption("\x1C\x02\x78\0\3sea\x1C\x02\x50\0\1x\0\0", 16);
        QByteArray turned;
        for (qsizetype i = 0; i < caption.size(); ++i)
            turned.append(caption[i / 4 * 4 + 3 - i % 4]);
        TestPage page;
        for (const QByteArray& bytes : { caption, turned }) {
            page.moreTags
                = [&](tiff* to) { TIFFSetField(to, TIFFTAG_RICHTIFFIPTC, 16, bytes.data()); };
            QVERIFY(collect({ page }, 3, "wb"));
            QVERIFY(bytesOf(m_out).contains(caption));
        }
    }

    void writesTilesOfOtherSizesAsStrips()
    {
        for (const char* compression : { "", " compression=5" }) {
            const QByteArray text = "width=180 height=90 tileWidth=112 tileHeight=64";
            writeTiff(m_source, { TestPage((text + compression).constData()) });
            const QByteArray tiles = readTiff(m_source).value(0).samples;
            // The same bytes as tiles of 56 x 128 pixels.
            patchEntry(m_source, TIFFTAG_TILEWIDTH, TIFFTAG_TILEWIDTH, 56);
            patchEntry(m_source, TIFFTAG_TILELENGTH, TIFFTAG_TILELENGTH, 128);
            QByteArray pixels;
            for (int y = 0; y < 90; ++y)
                for (int x = 0; x < 180; ++x)
                    pixels += tiles[x / 56 * 56 * 128 + y * 56 + x % 56];
            for (const int index : { 0, 3 }) {
                QCOMPARE(leftOutOf(index), QStringList());
                QCOMPARE(readTiff(m_out).value(0).samples, pixels);
                // Encoded ahead, the strips were described as tiles.
                const TiffDocument source(m_source);
                const auto page = source.page(0).sharedSource();
                MultiPageTiffWriter ahead(m_out, index, 1);
                ahead.append(page, encodePieces(*page, tiffCompressionTag(index)));
                QVERIFY(ahead.commit());
                QCOMPARE(readTiff(m_out).value(0).samples, pixels);
            }
        }
    }

    void numbersThePages()
    {
        QVERIFY(collect({ "" }, 0));
        QCOMPARE(readTiff(m_out).value(0).number(TIFFTAG_PAGENUMBER), -1);

        writeTiff(m_source, { TestPage() });
        for (const int total : { 2, 65'536 }) { // the tag has no number for the latter
            MultiPageTiffWriter file(m_out, 0, total);
            file.append(TiffDocument(m_source).page(0).sharedSource());
            file.append(std::make_shared<ShortOfMemory>());
            QVERIFY(file.commit());
            for (const int i : { 0, 1 })
                QCOMPARE(readTiff(m_out).value(i).values(TIFFTAG_PAGENUMBER),
                         total == 2 ? (QList { 1.0 * i, 2.0 }) : QList<double>());
        }
    }

    // What is appended behind libtiff's directory could reach past 4 GB by itself.
    void becomesBigTiffForWhatAPageSays()
    {
        const QByteArray text(5000, 't');
        TestPage page;
        page.moreTags = [&](tiff* to) { TIFFSetField(to, TIFFTAG_IMAGEDESCRIPTION, text.data()); };
        writeTiff(m_source, { page });
        // The same text as GDAL_METADATA, which libtiff does not copy.
        putBytes(m_source, bytesOf(m_source).replace("\x0E\1\2\0"_ba, "\x80\xA4\2\0"_ba));
        for (const std::uint64_t limit : { 20'000U, 4'000U }) {
            MultiPageTiffWriter file(m_out, 0, 1, limit);
            file.append(TiffDocument(m_source).page(0).sharedSource());
            QVERIFY2(file.commit(), qPrintable(file.failureReason()));
            QCOMPARE(bytesOf(m_out).at(2), limit == 4'000 ? 43 : 42);
            QVERIFY(bytesOf(m_out).contains(text + '\0'));
            QCOMPARE(readTiff(m_out).size(), 1);
        }
    }

    void becomesBigTiffWhenItCouldBeTooLarge()
    {
        // Far from it, foreseen, met at the last page, met at the first page.
        for (const auto& [limit, index, isBig] : { std::tuple(1'000'000U, 0, false),
                                                   { 4'000U, 0, true },
                                                   { 7'000U, 2, true },
                                                   { 600U, 2, true } }) {
            QList<TestPage> pages(20, noise());
            TestPage broken("compression=5"); // leaves no trace, not in a file begun again either
            broken.encoded = QList<QByteArray>(4, "\x80\x0F");
            pages.insert(10, broken);
            QVERIFY(collect(pages, index, "wl", limit));
            QCOMPARE(m_refused, 1);
            QCOMPARE(bytesOf(m_out).startsWith("II\x2B"), isBig);
            QCOMPARE(samplesOf(m_out).size(), 20);
            QCOMPARE(samplesOf(m_out), samplesOf(m_source));
            for (int i = 0; i < 20; ++i)
                QCOMPARE(readTiff(m_out).value(i).values(TIFFTAG_PAGENUMBER),
                         (QList { 1.0 * i, 20.0 }));
            QCOMPARE(namesIn(m_folder.path()), (QStringList { u"out.tiff"_s, u"page.tif"_s }));
        }
    }

    void tellsAtTheEndThatTheTargetTookNoMore()
    {
        writeTiff(m_source, QList<TestPage>(20, noise()));
        putBytes(m_out, "old");
        const TiffDocument source(m_source);
        // At the first page, later, and while it is begun again: pages of a BigTIFF file take more
        // room than those of a classic one.
        for (const auto& [limit, diskBytes] :
             { std::pair(classicLimit, rlim_t { 5 }), { classicLimit, 5000 }, { 7000, 7100 } }) {
            const FileSizeLimit disk(diskBytes);
            MultiPageTiffWriter file(m_out, 2, 20, limit);
            for (int i = 0; i < 20; ++i)
                file.append(source.page(i).sharedSource());
            QCOMPARE(file.pageCount(), 20);
            QVERIFY(!file.commit());
            QVERIFY2(file.failureReason().contains(u"File too large"_s),
                     qPrintable(file.failureReason()));
            QCOMPARE(bytesOf(m_out), QByteArray("old"));
        }
        QCOMPARE(namesIn(m_folder.path()), (QStringList { u"out.tiff"_s, u"page.tif"_s }));
    }

    // Pieces that other threads brought to their places lay elsewhere, or were missing where no
    // thread came, or where the disk was full for them.
    void isTheSameWhoeverWritesThePieces()
    {
        TestPage page("bits=8 width=500 height=400 rows=50");
        page.sample = [](int x, int y, int) { return (x * x * 31 + y * y * 17) >> 3 & 255; };
        writeTiff(m_source, QList<TestPage>(20, page));
        const TiffDocument source(m_source);
        std::vector<std::jthread> threads;
        std::vector<std::function<void()>> works;
        const auto writer = [&](const RunLater& later) {
            putBytes(m_out, "old");
            auto file = std::make_unique<MultiPageTiffWriter>(m_out, 3, 20);
            file->setLater(later);
            for (int i = 0; i < 20; ++i) {
                const auto one = source.page(i).sharedSource();
                file->append(one, encodePieces(*one, COMPRESSION_LZW));
            }
            return file;
        };
        QVERIFY(writer({})->commit());
        const QByteArray wanted = bytesOf(m_out);
        QVERIFY(wanted.size() > qsizetype { 20 } * 64 * 1024);
        const RunLater onFullDisk = [](const std::function<void()>& work) {
            const FileSizeLimit disk(5000);
            work();
            return true;
        };
        const std::vector<RunLater> ways {
            [](const std::function<void()>&) { return false; },
            [&](const std::function<void()>& work) { // too late
                works.push_back(work);
                return true;
            },
            [&](const std::function<void()>& work) {
                threads.emplace_back(work);
                return true;
            },
            onFullDisk,
        };
        for (const RunLater& way : ways) {
            QVERIFY(writer(way)->commit());
            QVERIFY(bytesOf(m_out) == wanted);
        }
        for (const std::function<void()>& work : works)
            work();
        const auto file = writer(onFullDisk);
        {
            const FileSizeLimit disk(5000);
            QVERIFY(!file->commit());
        }
        QVERIFY(file->failureReason().contains(u"File too large"_s));
        QCOMPARE(bytesOf(m_out), QByteArray("old"));
        QVERIFY(file->commit()); // there is room again
        QVERIFY(bytesOf(m_out) == wanted);
    }

    void losesNoPageForWantOfMemory()
    {
        putBytes(m_out, "old");
        const auto page = std::make_shared<ShortOfMemory>();
        MultiPageTiffWriter file(m_out, 0, 2, 2500);
        file.append(page);
        page->isShort = true; // when it is read again for a BigTIFF file, for which the next asks
        file.append(std::make_shared<ShortOfMemory>());
        QVERIFY(!file.commit());
        QCOMPARE(bytesOf(m_out), QByteArray("old"));
    }

    // Strips of a copied page that were written before one could not be read.
    void keepsNothingOfAPageThatCannotBeRead()
    {
        const TestPage small("compression=32773");
        TestPage large("compression=32773 width=1000 height=800 rows=400");
        large.encoded = { QByteArray(400'000, 'a'), QByteArray(400'000, 'b') };
        writeTiff(m_source, { small, large });
        qint64 wanted = 0;
        for (const bool isTried : { false, true }) {
            const TiffDocument source(m_source);
            const auto page = source.page(1).sharedSource();
            const EncodedPieces pieces = encodePieces(*page, COMPRESSION_PACKBITS);
            QVERIFY(pieces.copy);
            MultiPageTiffWriter file(m_out, 4, 1);
            file.append(source.page(0).sharedSource());
            if (isTried) {
                QVERIFY(QFile::resize(m_source, 500'000));
                QVERIFY(!reasonOf([&] { file.append(page, pieces); }).isNull());
            }
            QVERIFY(file.commit());
            QCOMPARE(QFileInfo(m_out).size(), isTried ? wanted : QFileInfo(m_out).size());
            wanted = QFileInfo(m_out).size();
        }
    }

private:
    /// Writes the pages to "page.tif", opens it and collects them in "out.tiff"; those that cannot
    /// be collected are counted in `m_refused`. False when there is no output, or another one from
    /// pieces that are encoded apart, of a file that has a new name since it was opened.
    bool collect(const QList<TestPage>& pages, int compressionIndex, const char* mode = "wl",
                 std::uint64_t limit = classicLimit, const PageTreatment& treatment = {})
    {
        writeTiff(m_source, pages, mode);
        const TiffDocument source(m_source, treatment);
        const std::unique_ptr<TiffDocument> clone = source.clone();
        const QString moved = m_source + u'2';
        bool isSame = QFile::rename(m_source, moved);
        QByteArray direct;
        for (const bool isApart : { false, true }) {
            MultiPageTiffWriter file(m_out, compressionIndex, source.pageCount(), limit);
            std::map<int, EncodedPieces> prepared;
            m_refused = 0;
            for (int i = 0; i < source.pageCount(); ++i)
                try {
                    if (isApart)
                        prepared[i] = encodePieces(clone->page(i).source(),
                                                   tiffCompressionTag(compressionIndex));
                    file.append(source.page(i).sharedSource(), prepared[i]);
                } catch (const std::runtime_error&) {
                    ++m_refused;
                }
            isSame = isSame && file.pageCount() == pages.size() - m_refused && file.commit()
                && file.failureReason().isEmpty()
                && std::exchange(direct, bytesOf(m_out)) == (isApart ? bytesOf(m_out) : "");
        }
        return QFile::rename(moved, m_source) && isSame;
    }

    /// Writes the first page of "page.tif" to "out.tiff". What it leaves out, or why it fails.
    QStringList leftOutOf(int compressionIndex) const
    {
        const TiffDocument source(m_source);
        const PageImage image = source.page(0);
        MultiPageTiffWriter file(m_out, compressionIndex, 1);
        file.append(image.sharedSource());
        return file.commit() ? image.takeDiagnostics().leftOutTags
                             : QStringList { file.failureReason() };
    }

    QTemporaryDir m_folder;
    const QString m_source = m_folder.filePath(QStringLiteral("page.tif"));
    const QString m_out = m_folder.filePath(QStringLiteral("out.tiff"));
    int m_refused = 0;
};

QTEST_GUILESS_MAIN(MultiPageTiffTest)
#include "MultiPageTiffTest.moc"
