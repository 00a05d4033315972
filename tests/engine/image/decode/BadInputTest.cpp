#include "engine/settings/Settings.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <QtEndian>

#include <tiffio.h>

namespace {

const QStringList outputs { u"a.jpg"_s, u"a.png"_s, u"a.gif"_s, u"a.bmp"_s, u"a.tiff"_s };

/// The only strip of such a page.
QByteArray stripOf(const TestPage& page)
{
    const SinglePage single(page);
    return readTiff(single.path(u"page.tif"_s)).value(0).encoded;
}

/// A page whose strip holds all that its decoder needs.
TestPage wholeStrip(const char* text)
{
    TestPage page(text);
    page.rows = page.height;
    if (page.compression == COMPRESSION_JPEG)
        page.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0); };
    return page;
}

} // namespace

class BadInputTest : public QObject
{
    Q_OBJECT

private slots:
    void savesNoPageThatCannotBeDecodedWhole_data()
    {
        QTest::addColumn<QByteArray>("encoded"); // empty: the first half of what should be there
        for (const char* page : { "rows=33", "rows=33 compression=5", "rows=33 compression=8",
                                  "rows=33 compression=32773", "rows=33 fax",
                                  "rows=33 fax compression=3", "rows=33 compression=7" })
            QTest::newRow(page) << QByteArray();
        for (const char* page :
             { "rows=33 compression=5 photometric=0", "rows=33 compression=8 photometric=0",
               "rows=33 compression=7 photometric=0", "tileWidth=64 tileHeight=48 compression=5" })
            QTest::newRow(page) << QByteArray(900, '\x5A');
        for (const char* page : { "width=-1 height=1 fax", "width=1 height=-1 rows=-1 fax",
                                  "width=100000 height=100000 rows=100000 fax",
                                  "width=100000 height=100000 rows=100000",
                                  "width=100000 height=100000 rows=100000 compression=5",
                                  "width=100000 height=100000 rows=100000 compression=8",
                                  "width=100000 height=100000 rows=100000 compression=32773" })
            QTest::newRow(page) << QByteArray("0123456789");
        // A bit a row, each like the one above: this would decode to 1.25 GB of blank paper.
        QTest::newRow("width=100008 height=100008 rows=100008 fax") << QByteArray(12'600, '\xFF');
        QTest::newRow("width=4194312 height=1 fax")
            << QByteArray(100, '\xFF'); // tables as long as a row
    }

    void savesNoPageThatCannotBeDecodedWhole()
    {
        QFETCH(QByteArray, encoded);
        m_folder = std::make_unique<QTemporaryDir>();
        const QString path = m_folder->filePath(u"page.tif"_s);
        TestPage page(QTest::currentDataTag());
        if (encoded.isEmpty()) {
            writeTiff(path, { page });
            encoded = readTiff(path).value(0).encoded;
            encoded.truncate(encoded.size() / 2);
        }
        page.encoded = { encoded };
        writeTiff(path, { page });
        QVERIFY(isRefused(page));
    }

    void savesNoPageWithTheStripOfAnother_data()
    {
        // A fax that ends early and one without ends of line; JPEG and JBIG of another size; JPEG
        // with something between its segments; JBIG of a size, its bits turned round, that ends the
        // program in its decoder where there is not so much memory.
        addTextRows(R"(
fax                      | height=10 fax                      |
bits=1 compression=2     | width=40 bits=1 compression=2      |
compression=7            | height=16 compression=7            |
compression=7            | width=16 compression=7             |
compression=7            | compression=7                      | xx
bits=1 compression=34661 | width=470 bits=1 compression=34661 |
bits=1 compression=34661 | bits=1 compression=34661           | huge
)");
    }

    void savesNoPageWithTheStripOfAnother()
    {
        const auto [text, other, change] = textRow<3>();
        m_folder = std::make_unique<QTemporaryDir>();
        const QString path = m_folder->filePath(u"page.tif"_s);
        TestPage test = wholeStrip(qPrintable(text));
        test.encoded = { stripOf(test) };
        writeTiff(path, { test });
        QVERIFY(TiffDocument(path).page(0).save(m_folder->filePath(u"a.png"_s), Settings(nullptr)));
        QVERIFY(QFile::remove(m_folder->filePath(u"a.png"_s)));
        QByteArray strip = stripOf(wholeStrip(qPrintable(other)));
        if (change == u"huge")
            strip.replace(4, 8, QByteArray(8, '\x7F'));
        else if (!change.isEmpty())
            strip.insert(2, "xx");
        test.encoded = { strip };
        writeTiff(path, { test });
        QVERIFY(isRefused(test));
    }

    void tellsWhatADecoderIsNotSureOf_data()
    {
        // A place in a JPEG strip, from its end when negative, what is put there, and how the
        // warning starts. libjpeg gives the first one alone: others may be behind it.
        addTextRows(R"(
2  |                                      |
2  | ffe000104a464946000900000100000100 00 | the decoder says:
-2 | 000000                               |
-2 | 72657374206f66206974                 | its JPEG data go on
)");
    }

    void tellsWhatADecoderIsNotSureOf()
    {
        const auto [place, more, warning] = textRow<3>();
        TestPage page = wholeStrip("compression=7");
        QByteArray strip = stripOf(page);
        const qsizetype at = place.toInt() < 0 ? strip.size() + place.toInt() : place.toInt();
        page.encoded = { strip.insert(at, QByteArray::fromHex(more.toLatin1())) };
        SinglePage single(page);
        for (const QString& name : outputs) {
            QVERIFY(single.saves(name));
            const QStringList warnings = single.image().takeDiagnostics().warnings;
            QCOMPARE(warnings.size(), warning.isEmpty() ? 0 : 1);
            QVERIFY2(warnings.value(0).contains(warning), qPrintable(warnings.value(0)));
        }
    }

    void savesNoPageThatMakesNoSense_data()
    {
        // Tag, new tag, new value; 8 bits rather than 4. First no width, height, strips, colour
        // map.
        addTextRows(R"(
256 | 65000 | 47         |
257 | 65000 | 33         |
273 | 65000 | 8          |
320 | 65000 | 8          |
320 | 65000 | 8          | 8
256 | 256   | 0          |
259 | 259   | 999        |
258 | 258   | 77         |
277 | 277   | 0          |
273 | 273   | 2147483647 |
284 | 32997 | 4          |
284 | 32998 | 4          |
322 | 322   | 1000000000 |
)");
    }

    void savesNoPageThatMakesNoSense()
    {
        const auto [tag, newTag, value, bits] = textRow<4>();
        m_folder = std::make_unique<QTemporaryDir>();
        TestPage page("photometric=3 rows=33");
        page.bits = bits.isEmpty() ? 4 : 8;
        page.colorMap.assign(3U << page.bits, 7);
        if (tag == u"322" || newTag == u"32998")
            page.tileWidth = page.tileHeight = 16;
        writeTiff(m_folder->filePath(u"page.tif"_s), { page });
        patchEntry(m_folder->filePath(u"page.tif"_s), tag.toUInt(), newTag.toUInt(),
                   value.toUInt());
        QVERIFY(isRefused(page));
    }

    // 100 strips over the same 15 kB would be a page of 1.25 GB decoded.
    void countsSharedBytesOnce()
    {
        QByteArray data(15'000, '\xFF');
        for (const quint32 value : { 8U, 15'000U })
            for (int i = 0; i < 100; ++i) {
                const quint32 stored = qToLittleEndian(value);
                data.append(reinterpret_cast<const char*>(&stored), sizeof stored);
            }
        const QList<TiffEntry> entries { { 256, 100'000 }, { 257, 100'000 }, { 258, 1 },
                                         { 259, 4 },       { 262, 0 },       { 273, 15'008, 100 },
                                         { 277, 1 },       { 278, 1000 },    { 279, 15'408, 100 } };
        m_folder = std::make_unique<QTemporaryDir>();
        putBytes(m_folder->filePath(u"page.tif"_s), rawTiff({}, entries, { -1 }, data));
        QVERIFY(isRefused(TestPage("fax")));
    }

    void boundsWhatTheTagsHoldTogether()
    {
        const auto saves = [](unsigned tags, unsigned bytes) {
            TestPage page;
            page.moreTags = [=](tiff* to) {
                const QByteArray value(bytes, 'x');
                for (unsigned i = 0; i < tags; ++i)
                    TIFFSetField(to, i == 0 ? TIFFTAG_XMLPACKET : TIFFTAG_PHOTOSHOP, bytes,
                                 value.constData());
            };
            SinglePage single(page);
            return single.saves(u"a.png"_s) ? QString() : single.image().failureReason();
        };
        constexpr unsigned limit = 64 * 1024 * 1024;
        QCOMPARE(saves(1, limit - 1000), QString()); // with the other tags
        QCOMPARE(saves(2, limit / 2), u"its tags announce more than 64 MiB of values"_s);
    }

private:
    /// Whether every writer refuses the page of "page.tif" with a reason and leaves nothing.
    bool isRefused(const TestPage& page) const
    {
        PageImage image = TiffDocument(m_folder->filePath(u"page.tif"_s)).page(0);
        Settings settings(nullptr);
        // What has the wanted compression is copied as it lies; all else is decoded.
        settings.setTiffCompressionIndex(page.compression == 32773 ? 3 : 4);
        for (const QString& name : outputs)
            if (image.save(m_folder->filePath(name), settings) || image.failureReason().isEmpty())
                return false;
        return namesIn(m_folder->path()).size() == 1;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(BadInputTest)
#include "BadInputTest.moc"
