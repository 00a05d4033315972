#include "engine/image/decode/JpegTail.h"
#include "engine/image/decode/LzwDecoder.h"
#include "engine/image/tiffwriter/LzwEncoder.h"
#include "engine/settings/Settings.h"
#include "engine/threads/SharedWork.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <tiffio.h>

#include <thread>

namespace {

/// Qt puts the length before the stream.
QByteArray deflated(const QByteArray& plain) { return qCompress(plain).sliced(4); }

QByteArray lzw(const QByteArray& plain)
{
    LzwEncoder encoder;
    const std::span<const std::uint8_t> codes = encoder.encode(span(plain));
    return { reinterpret_cast<const char*>(codes.data()), static_cast<qsizetype>(codes.size()) };
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

/// The strips or tiles of a gray page of 8 bits, encoded, with the faults that the text names:
/// " 4 cut, 5 flipped".
QList<QByteArray> piecesOf(const TestPage& page, const QString& faults)
{
    const int width = page.tileWidth > 0 ? page.tileWidth : page.width;
    const int height = page.tileWidth > 0 ? page.tileHeight : page.rows;
    QList<QByteArray> pieces;
    for (int y = 0; y < page.height; y += height)
        for (int x = 0; x < page.width; x += width) {
            const bool isLonger = faults.contains(u" %1 longer"_s.arg(pieces.size()));
            QByteArray plain;
            for (int i = 0; i < (isLonger ? height + 3 : height) * width; ++i)
                plain.append(static_cast<char>(page.at(x + i % width, y + i / width, 0)));
            QByteArray piece = page.compression == 8 ? deflated(plain) : lzw(plain);
            if (faults.contains(u" %1 cut"_s.arg(pieces.size())))
                piece.chop(piece.size() / 2);
            if (faults.contains(u" %1 flipped"_s.arg(pieces.size())))
                piece[piece.size() / 2] = static_cast<char>(piece.at(piece.size() / 2) ^ 0x55);
            pieces.append(piece);
        }
    return pieces;
}

/// A file of one strip of a row of bytes, as libtiff encodes LZW and decodes it.
class LzwFile
{
public:
    explicit LzwFile(const QString& path, qsizetype size)
        : m_path(QFile::encodeName(path))
        , m_size(size)
    {
    }

    QByteArray encoded(QByteArray plain) const
    {
        tiff* file = created();
        TIFFWriteEncodedStrip(file, 0, plain.data(), plain.size());
        TIFFClose(file);
        file = TIFFOpen(m_path, "r");
        QByteArray bytes(static_cast<qsizetype>(TIFFRawStripSize(file, 0)), 0);
        TIFFReadRawStrip(file, 0, bytes.data(), bytes.size());
        TIFFClose(file);
        return bytes;
    }

    /// Empty when that fails.
    QByteArray decoded(QByteArray encoded) const
    {
        tiff* file = created();
        TIFFWriteRawStrip(file, 0, encoded.data(), encoded.size());
        TIFFClose(file);
        file = TIFFOpen(m_path, "r");
        QByteArray bytes(m_size, 0);
        const bool isWhole = TIFFReadEncodedStrip(file, 0, bytes.data(), m_size) == m_size;
        TIFFClose(file);
        return isWhole ? bytes : QByteArray();
    }

private:
    tiff* created() const
    {
        tiff* file = TIFFOpen(m_path, "w");
        TIFFSetField(file, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(m_size));
        TIFFSetField(file, TIFFTAG_IMAGELENGTH, 1);
        TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
        TIFFSetField(file, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
        return file;
    }

    QByteArray m_path;
    qsizetype m_size;
};

} // namespace

/// Strips of files that were read as something else than they are, or that only look damaged.
class StripDecoderTest : public QObject
{
    Q_OBJECT

private slots:
    void readsWhatIsSound_data()
    {
        // What fills up the last strip is sound, and of a large one no row may be too many.
        addTextRows(R"(
compression=8                                        | 7 | 0
compression=8                                        | 8 | 1
compression=5                                        | 7 | 0
compression=5                                        | 8 | 1
compression=1                                        | 7 | 0
compression=1                                        | 8 | 1
compression=1 width=3000 height=1500 rows=1500       | 0 | 0
compression=1 width=3000 height=1500 rows=1500       | 1 | 1
compression=32773                                    | 7 | 0
compression=32773                                    | 9 | 1
compression=8 width=3000 height=1500 rows=1500       | 0 | 0
compression=8 width=3000 height=1500 rows=1500       | 1 | 1
compression=5 width=3000 height=1500 rows=1500       | 0 | 0
compression=5 width=3000 height=1500 rows=1500       | 1 | 1
compression=32773 width=3000 height=1500 rows=1500   | 0 | 0
)");
    }

    void readsWhatIsSound()
    {
        const auto [text, moreRows, warnings] = textRow<3>();
        TestPage page(qPrintable(text));
        for (int y = 0; y < page.height; y += page.rows) {
            const int left = page.height - y;
            const QByteArray rows
                = rowsOf(page, y, left <= page.rows ? left + moreRows.toInt() : page.rows);
            page.encoded.append(page.compression == 8       ? deflated(rows)
                                    : page.compression == 5 ? lzw(rows)
                                    : page.compression == 1 ? rows
                                                            : packed(rows));
        }
        writeTiff(m_path, { page });
        QCOMPARE(differenceFrom(page, 7), QString());
        QCOMPARE(QString::number(m_warnings.size()), warnings);
    }

    // One too large to be held is read row by row; its checksum comes behind the last one.
    void refusesALargeStripOfAnotherChecksum()
    {
        TestPage page("width=3000 height=1500 rows=1500 compression=8");
        page.encoded = { deflated(rowsOf(page, 0, 1500)) };
        page.encoded[0].back() = static_cast<char>(page.encoded[0].back() ^ 1);
        writeTiff(m_path, { page });
        QCOMPARE(converted().width, 0);
    }

    void tellsOfFaultsAsWithoutHelp_data()
    {
        // Pieces 8 to 13 are the second row of tiles. Warnings, and why the page is refused.
        addTextRows(R"(
compression=8 tileWidth=48 tileHeight=32 |                       | 0 |
compression=8 tileWidth=48 tileHeight=32 | 10 flipped            | 0 | its Deflate data are damaged
compression=8 tileWidth=48 tileHeight=32 | 7 flipped             | 0 | its Deflate data are damaged
compression=8 tileWidth=48 tileHeight=32 | 13 flipped            | 0 | its Deflate data are damaged
compression=8 tileWidth=48 tileHeight=32 | 8 longer, 10 longer   | 1 |
compression=8 tileWidth=48 tileHeight=32 | 8 longer, 10 flipped  | 1 | its Deflate data are damaged
compression=8 tileWidth=48 tileHeight=32 | 8 flipped, 10 longer  | 0 | its Deflate data are damaged
compression=8 rows=9                     | 3 longer, 4 longer    | 1 |
compression=8 rows=9                     | 12 longer, 14 flipped | 1 | its Deflate data are damaged
compression=5 tileWidth=48 tileHeight=32 |                       | 0 |
compression=5 tileWidth=48 tileHeight=32 | 9 cut, 11 cut         | 0 | LZWDecode
compression=5 tileWidth=48 tileHeight=32 | 8 longer, 10 cut      | 1 | LZWDecode
compression=5 rows=9                     | 21 cut                | 0 | LZWDecode
)");
    }

    // A fault that is told otherwise, too late, twice or not at all when several threads decode the
    // strips or tiles of a band; samples that are put elsewhere; help that is never asked for.
    void tellsOfFaultsAsWithoutHelp()
    {
        const auto [text, faults, warnings, reason] = textRow<4>();
        TestPage page(qPrintable(text + u" width=300 height=200"_s));
        page.encoded = piecesOf(page, u' ' + faults);
        writeTiff(m_path, { page });
        const QStringList alone = rowsTold(nullptr);
        QCOMPARE(alone.at(0).section(u':', 0, 0), reason);
        QCOMPARE(alone.at(1), warnings);
        SharedWork work;
        bool isOver = false;
        int turns = 0;
        std::thread helper([&] {
            SharedWork::Lock lock = work.lock();
            work.helpUntil(lock, [&] { return ++turns, isOver; });
        });
        QStringList helped;
        const auto hasHelped = [&] {
            const SharedWork::Lock lock = work.lock();
            return turns > 2;
        };
        for (int pass = 0; pass < 10 || (pass < 5000 && !hasHelped()); ++pass) {
            helped = rowsTold(&work);
            if (helped != alone)
                break;
        }
        const bool tookPart = hasHelped();
        {
            const SharedWork::Lock lock = work.lock();
            isOver = true;
            work.notify();
        }
        helper.join();
        QCOMPARE(helped, alone);
        QVERIFY(tookPart);
    }

    void decodesLzw_data()
    {
        // Bytes, and how many in a row before the same come again: strings of one byte, full
        // tables, strings that reach into themselves, long ones, those around eight bytes.
        addTextRows(R"(
1      | 1
40000  | 40000
9000   | 1
60000  | 2
70000  | 7
3001   | 9
100000 | 300
300000 | 300000
200000 | 40000
)");
    }

    // A wrong byte where codes become wider, tables full or strings long; damaged data taken for
    // sound, or read otherwise than libtiff reads them; data encoded otherwise than by libtiff.
    void decodesLzw()
    {
        const auto [size, period] = textRow<2>();
        QByteArray plain(size.toInt(), 0);
        std::uint32_t random = 1;
        for (qsizetype i = 0; i < plain.size(); ++i) {
            random = random * 1'664'525 + 1'013'904'223;
            plain[i] = i < period.toInt() ? static_cast<char>(random >> 24U)
                                          : plain.at(i - period.toInt());
            if (random % 97 == 0)
                plain[i] = static_cast<char>(plain.at(i) + 1);
        }
        const LzwFile file(m_path, plain.size());
        const QByteArray encoded = file.encoded(plain);
        const auto decoded = [&](const QByteArray& bytes) {
            std::vector<std::uint8_t> to(static_cast<std::size_t>(plain.size()));
            return decodeLzw(span(bytes), to)
                ? QByteArray(reinterpret_cast<const char*>(to.data()), plain.size())
                : QByteArray();
        };
        QVERIFY(decoded(encoded) == plain);
        QCOMPARE(decodedLzwBytes(span(encoded)), static_cast<std::uint64_t>(plain.size()));
        QVERIFY(decoded(lzw(plain + plain.first(1))).isEmpty());
        LzwEncoder encoder;
        QVERIFY(std::ranges::equal(encoder.encode(span(plain)), span(encoded)));
        QVERIFY(decoded(encoded.chopped(encoded.size() / 2)).isEmpty());
        int taken = 0;
        TIFFSetErrorHandler(nullptr);
        for (qsizetype i = 0; i < 200; ++i) {
            QByteArray damaged = encoded;
            const qsizetype at = i * encoded.size() / 200;
            damaged[at] = static_cast<char>(damaged.at(at) ^ (1 << (i % 8)));
            const QByteArray got = decoded(damaged);
            if (got.isEmpty())
                continue;
            ++taken;
            QVERIFY2(got == file.decoded(damaged), qPrintable(QString::number(i)));
        }
        QVERIFY(taken > 0 || plain.size() < 5000); // most damage leaves codes that mean something
    }

    // The code of the end in the wrong width, behind a table that has just become full.
    void endsLzwAsLibtiffDoes()
    {
        QByteArray plain;
        std::uint32_t random = 7;
        LzwEncoder encoder;
        for (int size = 1; size < 3850; ++size) {
            random = random * 1'664'525 + 1'013'904'223;
            plain.append(static_cast<char>(random >> 24U));
            if (size < 4 || size % 512 > 500 || size % 512 < 4 || size > 3830)
                QVERIFY(std::ranges::equal(encoder.encode(span(plain)),
                                           span(LzwFile(m_path, size).encoded(plain))));
        }
    }

    void refusesStripsThatAreNotThere_data()
    {
        // One strip of all rows, in a table of one, is right though its RowsPerStrip is wrong, and
        // so is one of unknown size.
        addTextRows(R"(
rows=10                         | 278 | 11   | refused
tileWidth=48 tileHeight=48      | 325 | 2300 | refused
photometric=6 samples=3 rows=33 | 279 | 400  | refused
rows=33                         | 279 | 0    | right
rows=33                         | 278 | 8    | right
)");
    }

    void refusesStripsThatAreNotThere()
    {
        const auto [text, tag, value, outcome] = textRow<4>();
        TestPage page(qPrintable(text));
        if (page.photometric == 6) {
            page.encoded = { QByteArray(24 * 17 * 6, 'y') };
            page.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_YCBCRSUBSAMPLING, 2, 2); };
        }
        writeTiff(m_path, { page });
        QCOMPARE(converted().height, 33);
        patchEntry(m_path, tag.toUInt(), tag.toUInt(), value.toUInt());
        const Picture picture = converted();
        QCOMPARE(picture.height == 0 ? u"refused"_s : u"right"_s, outcome);
        if (picture.height > 0)
            QCOMPARE(differenceFrom(page), QString());
    }

    // "Extraneous bytes" of libjpeg hid that restart markers, and pixels with them, were lost.
    void judgesWhatIsLeftOfAJpegStream()
    {
        // 16 x 16 gray: four units, a marker after each two.
        const QByteArray start = QByteArray::fromHex(
            "ffd8 ffdd00040002 ffc0000b08001000100101 1100 ffda0008010100003f00");
        const auto judged = [&](const QByteArray& coded, unsigned left, const char* more) {
            const QByteArray stream = start + coded + more;
            return judgeJpegTail(span(stream), left);
        };
        const char* const end = "\xFF\xD9";
        QCOMPARE(judged("abc\xFF\xD0xyz", 2, end), JpegTail::Unknown);
        QCOMPARE(judged(QByteArray("abc\xFF\xD0xyz\0\0", 10), 2, end), JpegTail::Filler);
        QCOMPARE(judged("abc\xFF\xD0xyz\xFF\xFF", 2, end), JpegTail::Filler);
        QCOMPARE(judged("abcxyz", 2, end), JpegTail::LostRestarts);
        QCOMPARE(judged(QByteArray("abc\xFF\x00\xD0xyz\0\0", 11), 2, end), JpegTail::LostRestarts);
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
            return hasAllScans(span(stream));
        };
        QVERIFY(isWhole(coarse + detail + lastBit));
        QVERIFY(!isWhole(coarse + detail));
        QVERIFY(!isWhole(coarse + lastBit));
        QVERIFY(!isWhole({}));
    }

private:
    /// What is wrong with the pixels that "page.tif" is converted to, if they are to be `page`'s.
    QString differenceFrom(const TestPage& page, int step = 1)
    {
        const auto expected
            = [&](int x, int y, int c) { return static_cast<double>(page.at(x, y, c)); };
        return difference(converted(), { page.width, page.height, 1, 8 }, expected, 0, step);
    }

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

    /// Why the rows of "page.tif" end, how many warnings there were, and the rows.
    QStringList rowsTold(SharedWork* work) const
    {
        const PageImage image = TiffDocument(m_path).page(0);
        QByteArray rows;
        const QString reason = reasonOf([&] {
            const auto source = image.source().rowsShownIn(8, work);
            for (Band band = source->nextBand(); band.rows > 0; band = source->nextBand())
                for (int i = 0; i < band.rows; ++i)
                    rows.append(reinterpret_cast<const char*>(band.row(i)), band.strideBytes);
        });
        const auto warnings = image.takeDiagnostics().warnings.size();
        return { reason, QString::number(warnings), QString::fromLatin1(rows.toHex()) };
    }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(QStringLiteral("page.tif"));
    const QString m_out = m_folder.filePath(QStringLiteral("a.png"));
    QStringList m_warnings;
};

QTEST_GUILESS_MAIN(StripDecoderTest)
#include "StripDecoderTest.moc"
