#include "engine/image/TiffDocument.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

namespace {

/// The samples of row `y` of a test page.
char valueOf(int y) { return static_cast<char>(y % 251); }

constexpr int rowPx = 239;

/// A row of so many equal samples in 270 bytes of LZW: the code that empties the table, then one
/// for each sample, all of 9 bits.
QByteArray lzwRow(char value)
{
    QByteArray bytes;
    std::uint32_t bits = 0;
    int count = 0;
    for (int i = 0; i <= rowPx; ++i) {
        bits = bits << 9U | (i == 0 ? 256U : static_cast<std::uint8_t>(value));
        for (count += 9; count >= 8; count -= 8)
            bytes += static_cast<char>(bits >> static_cast<unsigned>(count - 8));
    }
    return bytes;
}

/// What this process has written to files so far; 0 where the system does not tell.
qint64 bytesWritten()
{
    const QByteArray all = bytesOf(u"/proc/self/io"_s);
    return all.mid(all.indexOf("wchar:") + 6).split('\n').first().trimmed().toLongLong();
}

} // namespace

/// Pages whose strips or tiles are nearly as large as the program takes, or larger.
class LargePiecesTest : public QObject
{
    Q_OBJECT

private slots:
    /// A strip too large to be held is decoded from a copy.
    void copiesOnlyThePageThatIsRead()
    {
        constexpr int height = 62'400;
        QByteArray strip;
        for (int y = 0; y < height; ++y)
            strip += lzwRow(valueOf(y));
        TestPage page("width=239 height=62400 rows=62400 compression=5");
        page.encoded = { strip };
        const QString path = m_folder.filePath(u"pages.tif"_s);
        for (const auto& [mode, index] : { std::pair("wl", 1), { "wb8", 2 } }) {
            writeTiff(path, { page, page, page }, mode);
            const PageImage shown = TiffDocument(path).page(index);
            const qint64 writtenBefore = bytesWritten();
            const std::unique_ptr<RowSource> rows = shown.source().rows();
            int y = 0;
            for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
                for (int i = 0; i < band.rows; ++i, ++y)
                    QCOMPARE(QByteArray(reinterpret_cast<const char*>(band.row(i)), rowPx),
                             QByteArray(rowPx, valueOf(y)));
            QCOMPARE(y, height);
            const qint64 written = bytesWritten() - writtenBefore;
            QVERIFY(shown.takeDiagnostics().logLines.isEmpty()); // the holes are no damage
            QVERIFY2(written < strip.size() + 65'536, QByteArray::number(written));
            QVERIFY(writtenBefore == 0 || written >= strip.size()); // the copy was needed
        }
    }

    /// The rows of a strip that is decoded in parts, in the other byte order.
    void restoresTheOrderOfALargeStrip()
    {
        constexpr int rowSamples = 1024;
        TestPage page("width=1024 height=2560 rows=2560 bits=16 compression=32773");
        page.encoded = { ('\x7F' + QByteArray("\x01\x02").repeated(64)).repeated(16 * 2560) };
        const QString path = m_folder.filePath(u"order.tif"_s);
        writeTiff(path, { page }, "wb");
        const PageImage shown = TiffDocument(path).page(0);
        const std::unique_ptr<RowSource> rows = shown.source().rows();
        const std::vector<std::uint16_t> row(rowSamples, 0x0102);
        for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
            for (int i = 0; i < band.rows; ++i)
                QVERIFY(std::memcmp(band.row(i), row.data(), 2 * row.size()) == 0);
    }

    void turnsPagesOfFewLongRows_data()
    {
        const QByteArray zeros = QByteArray("\x81\0", 2).repeated(16384); // 2 MiB in 128s
        const QByteArray white(8, '\xFF'); // each fax row is like the one above
        QTest::addColumn<QByteArray>("encoded");
        QTest::addColumn<QStringList>("written");
        const char* const line = "width=16777216 height=1 rows=1 bits=1 compression=32773";
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
                QCOMPARE(single.saves(name), isWanted);
        }
    }

    void tookNoMoreMemoryThanPromised() { checkPeakMemory(300'000); } // after all of the above

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(LargePiecesTest)
#include "LargePiecesTest.moc"
