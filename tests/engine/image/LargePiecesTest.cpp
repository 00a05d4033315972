#include "engine/image/TiffDocument.h"
#include "engine/settings/Settings.h"
#include "engine/support/SystemLog.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <QtEndian>

namespace {

/// The samples of row `y` of a test page.
char valueOf(int y) { return static_cast<char>(y % 251); }

/// A page of `side` x `side` pixels in one strip, plane or tile, deflated. Its rows are gray.
struct LargePage
{
    int side;
    int samples;
    int photometric;
    int planes;
    bool isTile;

    QByteArray bytes() const
    {
        QByteArray pixels;
        pixels.reserve(qsizetype { side } * side * (planes > 1 ? 1 : samples));
        for (int y = 0; y < side; ++y)
            pixels += photometric == 6 ? (QByteArray(1, valueOf(y)) + "\x80\x80").repeated(side)
                                       : QByteArray(side, valueOf(y));
        // Qt puts the length before the stream.
        const QByteArray encoded = qCompress(pixels, 1).sliced(4);
        QByteArray file("II*\0", 4);
        put(file, 8 + static_cast<quint32>(encoded.size()), 4);
        file += encoded;
        const auto count = static_cast<quint32>(planes);
        const auto length = static_cast<quint32>(encoded.size());
        const auto lists = static_cast<quint32>(file.size()) + 2 + 12 * 12 + 4;
        const auto sides = static_cast<quint32>(side);
        // All planes are the same strip.
        const std::initializer_list<std::array<quint32, 3>> entries {
            { 256, 1, sides },
            { 257, 1, sides },
            { 258, 1, 8 },
            { 259, 1, 8 },
            { 262, 1, static_cast<quint32>(photometric) },
            { 277, 1, static_cast<quint32>(samples) },
            { 284, 1, planes > 1 ? 2U : 1U },
            { isTile ? 322U : 278U, 1, sides },
            { isTile ? 323U : 339U, 1, isTile ? sides : 1 },
            { isTile ? 324U : 273U, count, planes > 1 ? lists : 8 },
            { isTile ? 325U : 279U, count, planes > 1 ? lists + 12 : length },
            { 530, 2, 1 | 1 << 16 },
        };
        std::vector<std::array<quint32, 3>> sorted(entries);
        std::sort(sorted.begin(), sorted.end());
        put(file, static_cast<quint32>(sorted.size()), 2);
        for (const auto& [tag, number, value] : sorted) {
            put(file, tag, 2);
            put(file, tag == 530 ? 3 : 4, 2);
            put(file, number, 4);
            put(file, value, 4);
        }
        put(file, 0, 4);
        for (const quint32 value : { 8U, 8U, 8U, length, length, length })
            put(file, value, 4);
        return file;
    }

private:
    static void put(QByteArray& file, quint32 value, int size)
    {
        value = qToLittleEndian(value);
        file.append(reinterpret_cast<const char*>(&value), size);
    }
};

/// What this process has written to files so far; 0 where the system does not tell.
qint64 bytesWritten()
{
    QFile io(u"/proc/self/io"_s);
    if (!io.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray all = io.readAll();
    return all.mid(all.indexOf("wchar:") + 6).split('\n').first().trimmed().toLongLong();
}

} // namespace

/// Pages whose strips or tiles are nearly as large as the program takes, or larger.
class LargePiecesTest : public QObject
{
    Q_OBJECT

private slots:
    void showsTheRowsOfALargePiece_data()
    {
        QTest::addColumn<LargePage>("page");
        QTest::newRow("three planes") << LargePage { 8000, 3, 2, 3, false };
        QTest::newRow("YCbCr") << LargePage { 5600, 3, 6, 1, false };
        QTest::newRow("tile") << LargePage { 10000, 1, 1, 1, true };
    }

    void showsTheRowsOfALargePiece()
    {
        QFETCH(LargePage, page);
        const PageImage shown = image(page);
        const std::unique_ptr<RowSource> rows = shown.source().rows();
        int y = 0;
        for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
            for (int i = 0; i < band.rows; ++i, ++y) {
                const std::uint8_t* row = band.row(i);
                const auto value = static_cast<std::uint8_t>(valueOf(y));
                const qsizetype end = rows->layout().rowBytes(page.side);
                if (row[0] != value || row[end / 2] != value || row[end - 1] != value)
                    QFAIL(qPrintable(u"row %1 starts with %2"_s.arg(y).arg(row[0])));
            }
        QCOMPARE(y, page.side);
    }

    void refusesATileThatIsTooLargeForItsPage()
    {
        const PageImage page = image({ 13008, 1, 1, 1, true });
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, page.source().rows());
    }

    void copiesOnlyThePageThatIsRead_data()
    {
        QTest::addColumn<int>("index");
        for (const char* mode : { "wl", "wb8" })
            for (const int index : { 0, 1, 2 })
                QTest::addRow("%s, page %d", mode, index) << index;
    }

    /// A strip too large to be held is decoded from a copy.
    void copiesOnlyThePageThatIsRead()
    {
        QFETCH(int, index);
        constexpr int side = 4160;
        QByteArray strip; // literal runs of PackBits
        for (int y = 0; y < side; ++y)
            strip += ('\x7F' + QByteArray(128, valueOf(y))).repeated(32)
                + ('\x3F' + QByteArray(64, valueOf(y)));
        TestPage page("width=4160 height=4160 rows=4160 compression=32773");
        page.encoded = { strip };
        const QString path = m_folder.filePath(u"pages.tif"_s);
        writeTiff(path, { page, page, page }, QByteArray(QTest::currentDataTag()).split(',')[0]);
        const PageImage shown = TiffDocument(path).page(index);
        const qint64 writtenBefore = bytesWritten();
        const std::unique_ptr<RowSource> rows = shown.source().rows();
        int y = 0;
        for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
            for (int i = 0; i < band.rows; ++i, ++y)
                if (band.row(i)[0] != static_cast<std::uint8_t>(valueOf(y))
                    || band.row(i)[side - 1] != static_cast<std::uint8_t>(valueOf(y)))
                    QFAIL(qPrintable(u"row %1 starts with %2"_s.arg(y).arg(band.row(i)[0])));
        QCOMPARE(y, side);
        const qint64 written = bytesWritten() - writtenBefore;
        QVERIFY(shown.takeDiagnostics().logLines.isEmpty()); // the holes are no damage
        QVERIFY2(written < strip.size() + 65'536, QByteArray::number(written));
    }

    void turnsPagesOfFewLongRows_data()
    {
        const QByteArray zeros = QByteArray("\x81\0", 2).repeated(16384); // 2 MiB in 128s
        const QByteArray white(8, '\xFF'); // each fax row is like the one above
        QTest::addColumn<QByteArray>("encoded");
        QTest::addColumn<QStringList>("written");
        const char* const line = "width=16777216 height=1 rows=1 bits=1 compression=32773";
        QTest::addRow("%s orientation=2", line) << zeros << QStringList { u"a.png"_s, u"a.bmp"_s };
        QTest::addRow("%s orientation=3", line) << zeros << QStringList { u"a.png"_s, u"a.bmp"_s };
        QTest::addRow("%s orientation=3 photometric=3", line)
            << zeros << QStringList { u"a.png"_s, u"a.bmp"_s };
        QTest::newRow("width=4194304 height=64 rows=64 fax orientation=6")
            << white << QStringList { u"a.bmp"_s };
        QTest::newRow(
            "width=1 height=16777217 rows=16777217 orientation=6") // too long, once turned
            << QByteArray(16'777'217, '\0') << QStringList {};
    }

    /// Memory follows neither the number of rows that a page could have nor the bits that are
    /// spread.
    void turnsPagesOfFewLongRows()
    {
        QFETCH(QByteArray, encoded);
        QFETCH(QStringList, written);
        TestPage page(QTest::currentDataTag());
        page.encoded = { encoded };
        if (page.photometric == 3)
            page.colorMap = { 0, 65535, 0, 0, 0, 65535 };
        SinglePage single(page);
        for (const QString& name : { u"a.jpg"_s, u"a.gif"_s, u"a.png"_s, u"a.bmp"_s }) {
            const bool isWanted = written.contains(name);
            if (isWanted || page.compression != 4)
                QCOMPARE(single.image().save(single.path(name), Settings(nullptr)), isWanted);
        }
    }

    void tookNoMoreMemoryThanPromised() { checkPeakMemory(300'000); } // after all of the above

private:
    PageImage image(const LargePage& page)
    {
        QFile file(m_folder.filePath(u"page.tif"_s));
        if (!file.open(QIODevice::WriteOnly) || file.write(page.bytes()) < 0)
            qFatal("no file can be made");
        file.close();
        return TiffDocument(file.fileName()).page(0);
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(LargePiecesTest)
#include "LargePiecesTest.moc"
