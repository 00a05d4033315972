#include "engine/image/decode/JpegTail.h"
#include "engine/settings/Settings.h"
#include "tests/support/ImageReaders.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <tiffio.h>
#include <zlib.h>

namespace {

QByteArray deflated(const QByteArray& plain)
{
    auto size = compressBound(static_cast<uLong>(plain.size()));
    QByteArray encoded(static_cast<qsizetype>(size), '\0');
    compress(reinterpret_cast<Bytef*>(encoded.data()), &size,
             reinterpret_cast<const Bytef*>(plain.constData()), static_cast<uLong>(plain.size()));
    encoded.truncate(static_cast<qsizetype>(size));
    return encoded;
}

/// In runs and literals that do not care where rows end.
QByteArray packed(const QByteArray& plain)
{
    QByteArray encoded;
    for (qsizetype i = 0; i < plain.size(); i += 100)
        encoded += QByteArray(1, static_cast<char>(std::min<qsizetype>(100, plain.size() - i) - 1))
            + plain.mid(i, 100);
    return encoded;
}

/// Gray rows of 8 bits, from `first` on.
QByteArray rowsOf(const TestPage& page, int first, int count)
{
    QByteArray rows;
    for (int y = first; y < first + count; ++y)
        for (int x = 0; x < page.width; ++x)
            rows.append(static_cast<char>(page.at(x, y, 0)));
    return rows;
}

} // namespace

/// Strips of files that were read as something else than they are, or that only look damaged.
class StripDecoderTest : public QObject
{
    Q_OBJECT

private slots:
    void readsWhatIsSound_data()
    {
        using Encode = QByteArray (*)(const QByteArray& plain);
        QTest::addColumn<TestPage>("page");
        QTest::addColumn<Encode>("encode");
        QTest::addColumn<int>("moreRows"); // in the last strip
        QTest::addColumn<int>("warnings");
        const TestPage small("compression=8 height=33 rows=10");
        const TestPage packBits("compression=32773 height=33 rows=10");
        const TestPage large("compression=8 width=3000 height=1500 rows=1500");
        const TestPage largePackBits("compression=32773 width=3000 height=1500 rows=1500");
        QTest::newRow("deflate, filled up") << small << Encode(deflated) << 7 << 0;
        QTest::newRow("deflate, more than filled up") << small << Encode(deflated) << 8 << 1;
        QTest::newRow("PackBits, filled up") << packBits << Encode(packed) << 7 << 0;
        QTest::newRow("PackBits, more than filled up") << packBits << Encode(packed) << 9 << 1;
        QTest::newRow("large deflate") << large << Encode(deflated) << 0 << 0;
        QTest::newRow("large deflate, one row too many") << large << Encode(deflated) << 1 << 1;
        QTest::newRow("large PackBits, runs over rows")
            << largePackBits << Encode(packed) << 0 << 0;
    }

    void readsWhatIsSound()
    {
        using Encode = QByteArray (*)(const QByteArray& plain);
        QFETCH(TestPage, page);
        QFETCH(Encode, encode);
        QFETCH(int, moreRows);
        QFETCH(int, warnings);
        for (int y = 0; y < page.height; y += page.rows) {
            const bool isLast = y + page.rows >= page.height;
            page.encoded.append(
                encode(rowsOf(page, y, isLast ? page.height - y + moreRows : page.rows)));
        }
        writeTiff(m_path, { page });
        const Picture picture = converted();
        QCOMPARE(difference(
                     picture, { page.width, page.height, 1, 8 },
                     [&](int x, int y, int c) { return static_cast<double>(page.at(x, y, c)); }, 0,
                     7),
                 QString());
        QCOMPARE(m_warnings.size(), warnings);
    }

    // Bytes of the header were taken for pixels.
    void fillsWhatTheFileLeavesOut()
    {
        for (const bool hasNoData : { false, true }) {
            TestPage page("rows=10");
            page.encoded = { rowsOf(page, 0, 10), rowsOf(page, 10, 10) };
            page.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_TARGETPRINTER, "200"); };
            writeTiff(m_path, { page });
            if (hasNoData) // the text becomes that of GDAL_NODATA, 42113
                putBytes(m_path, bytesOf(m_path).replace("\x51\x01\x02", "\x81\xA4\x02"));
            const Picture picture = converted();
            QCOMPARE(difference(picture, { 47, 33, 1, 8 },
                                [&](int x, int y, int c) {
                                    return y < 20 ? static_cast<double>(page.at(x, y, c))
                                                  : hasNoData * 200.0;
                                }),
                     QString());
            const QString value = hasNoData ? u"200 (GDAL_NODATA)"_s : u"0"_s;
            QCOMPARE(
                m_warnings,
                QStringList { u"2 of its 4 strips have no data in the file and are filled with "_s
                              + value });
        }
    }

    // libtiff takes Deflate data for sound without a look at their checksum.
    void refusesEveryFlippedBitOfDeflate()
    {
        TestPage page("compression=8 height=6 rows=6");
        const QByteArray sound = deflated(rowsOf(page, 0, 6));
        page.encoded = { sound };
        writeTiff(m_path, { page });
        const Picture plain = converted();
        QCOMPARE(plain.width, 47);
        for (qsizetype bit = 0; bit < sound.size() * 8; bit += 3) {
            page.encoded = { sound };
            page.encoded[0][bit / 8] = static_cast<char>(sound[bit / 8] ^ (1 << bit % 8));
            writeTiff(m_path, { page });
            const Picture picture = converted();
            // The bits between the last code and the checksum mean nothing.
            QVERIFY2(picture.width == 0 || picture.samples == plain.samples,
                     qPrintable(QString::number(bit)));
        }
    }

    void refusesStripsThatAreNotThere_data()
    {
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<QList<unsigned>>("patch"); // tag and its new value
        QTest::addColumn<int>("rows"); // that are right all the same; 0: refused
        QTest::newRow("in the header") << QByteArray("rows=33") << QList { 273U, 0U } << 0;
        QTest::newRow("in the header, packed")
            << QByteArray("rows=33 compression=32773") << QList { 273U, 4U } << 0;
        QTest::newRow("one of several too small")
            << QByteArray("rows=10") << QList { 278U, 11U } << 0;
        QTest::newRow("tile too small")
            << QByteArray("tileWidth=48 tileHeight=48") << QList { 325U, 2300U } << 0;
        QTest::newRow("sub-sampled, too small")
            << QByteArray("photometric=6 samples=3 rows=33") << QList { 279U, 400U } << 0;
        QTest::newRow("the only one too small")
            << QByteArray("rows=33") << QList { 279U, 1550U } << 0;
        QTest::newRow("of unknown size") << QByteArray("rows=33") << QList { 279U, 0U } << 33;
        // One strip, and a table of one: what is wrong is RowsPerStrip.
        QTest::newRow("one strip of all rows") << QByteArray("rows=33") << QList { 278U, 8U } << 33;
    }

    void refusesStripsThatAreNotThere()
    {
        QFETCH(QByteArray, page);
        QFETCH(QList<unsigned>, patch);
        QFETCH(int, rows);
        TestPage test(page.constData());
        if (test.photometric == 6) {
            test.encoded = { QByteArray(24 * 17 * 6, 'y') };
            test.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_YCBCRSUBSAMPLING, 2, 2); };
        }
        writeTiff(m_path, { test });
        QCOMPARE(converted().height, 33);
        patchEntry(m_path, patch[0], patch[0], patch[1]);
        const Picture picture = converted();
        QCOMPARE(picture.height, rows);
        if (rows > 0)
            QCOMPARE(difference(picture, { 47, 33, 1, 8 },
                                [&](int x, int y, int c) {
                                    return static_cast<double>(test.at(x, y, c));
                                }),
                     QString());
    }

    // "Extraneous bytes" of libjpeg hid that restart markers, and pixels with them, were lost.
    void judgesWhatIsLeftOfAJpegStream()
    {
        // 16 x 16 gray: four units, a marker after each two.
        const auto judged = [](const QByteArray& coded, int left, const char* more = "\xFF\xD9") {
            const QByteArray stream
                = QByteArray::fromHex(
                      "ffd8 ffdd00040002 ffc0000b08001000100101 1100 ffda0008010100003f00")
                + coded + more;
            return judgeJpegTail({ reinterpret_cast<const std::uint8_t*>(stream.constData()),
                                   static_cast<std::size_t>(stream.size()) },
                                 static_cast<std::uint64_t>(left));
        };
        QCOMPARE(judged("abc\xFF\xD0xyz", 2), JpegTail::Unknown);
        QCOMPARE(judged(QByteArray("abc\xFF\xD0xyz\0\0", 10), 2), JpegTail::Filler);
        QCOMPARE(judged("abc\xFF\xD0xyz\xFF\xFF", 2), JpegTail::Filler);
        QCOMPARE(judged("abcxyz", 2), JpegTail::LostRestarts);
        QCOMPARE(judged(QByteArray("abc\xFF\x00\xD0xyz\0\0", 11), 2), JpegTail::LostRestarts);
        QCOMPARE(judged("abcxyz", 2, "\xFF\xDA"), JpegTail::Unknown); // another scan
        QCOMPARE(judgeJpegTail({}, 5), JpegTail::Unknown);
    }

    // A decoder is content with the first scans, which show a coarse picture.
    void missesScansOfAProgressiveStream()
    {
        const QByteArray start = QByteArray::fromHex("ffd8 ffc2000b080010001001011100");
        const QByteArray coarse = QByteArray::fromHex("ffda00080101000000 01") + "abc";
        const QByteArray detail = QByteArray::fromHex("ffda0008010100013f00") + "d\xFF\xD0g";
        const QByteArray lastBit = QByteArray::fromHex("ffda0008010100000010") + "e";
        const auto isWhole = [&](const QByteArray& scans) {
            const QByteArray stream = start + scans + "\xFF\xD9";
            return hasAllScans({ reinterpret_cast<const std::uint8_t*>(stream.constData()),
                                 static_cast<std::size_t>(stream.size()) });
        };
        QVERIFY(isWhole(coarse + detail + lastBit));
        QVERIFY(!isWhole(coarse + detail));
        QVERIFY(!isWhole(coarse + lastBit));
        QVERIFY(!isWhole({}));
    }

private:
    /// The page of "page.tif" as PNG; what the image had to say is kept.
    Picture converted()
    {
        PageImage image = TiffDocument(m_path).page(0);
        const bool isSaved = image.save(m_out, Settings(nullptr));
        m_warnings = image.takeDiagnostics().warnings;
        const Picture picture = isSaved ? readPicture(m_out) : Picture();
        QFile::remove(m_out);
        return picture;
    }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(QStringLiteral("page.tif"));
    const QString m_out = m_folder.filePath(QStringLiteral("a.png"));
    QStringList m_warnings;
};

QTEST_GUILESS_MAIN(StripDecoderTest)
#include "StripDecoderTest.moc"
