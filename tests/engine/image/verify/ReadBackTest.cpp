#include "engine/image/PageEncoding.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

namespace {

/// What comes over a complete file before it is read back: a bit turned over from that byte on, or
/// the last byte gone, or one more.
enum class Damage { None, Bit, Cut, More };
Damage damage = Damage::None;
std::uint64_t damagedAt = 0;

void harm(StagedFile& file)
{
    std::array<std::uint8_t, 1> byte {};
    if (damage == Damage::Bit) {
        file.readAt(damagedAt, byte);
        byte[0] = static_cast<std::uint8_t>(byte[0] ^ 1U << damagedAt % 8);
        file.writeAt(damagedAt, byte);
    } else if (damage == Damage::Cut) {
        file.resize(file.size() - 1);
    } else if (damage == Damage::More) {
        file.write(byte);
    }
}

bool wereBlocksEncoded = false; ///< then a file of them was refused when the page is encoded anew

void (*soundEncoder)(UprightPage& page, StagedFile& file) = nullptr;

void encodeWithHarm(UprightPage& page, StagedFile& file)
{
    if (wereBlocksEncoded)
        throw std::runtime_error("encoded anew");
    soundEncoder(page, file);
    harm(file);
}

void (*soundBlockEncoder)(UprightPage& page, JpegBlocks& blocks, StagedFile& file) = nullptr;

void encodeBlocksWithHarm(UprightPage& page, JpegBlocks& blocks, StagedFile& file)
{
    wereBlocksEncoded = true;
    soundBlockEncoder(page, blocks, file);
    harm(file);
}

/// Null when the page's file is taken for the page, with what then comes over it.
QString refusal(SinglePage& page, const QString& path, Damage what, std::uint64_t at)
{
    damage = what;
    damagedAt = at;
    wereBlocksEncoded = false;
    PageEncoding encoding = pageEncoding(path);
    soundEncoder = encoding.encode;
    encoding.encode = soundEncoder == nullptr ? nullptr : encodeWithHarm;
    soundBlockEncoder = encoding.encodeBlocks;
    encoding.encodeBlocks = soundBlockEncoder == nullptr ? nullptr : encodeBlocksWithHarm;
    return reasonOf([&] {
        const auto source = page.image().sharedSource();
        if (encoding.encode != nullptr) {
            encodedPage(source, path, encoding, { .verifies = true });
            return;
        }
        MultiPageTiffWriter file(path, path.section(u'.', -2, -2).toInt(), 1);
        TiffProof proof;
        proof.add(source, proofOf(*source));
        file.append(source);
        const auto complete = file.finish();
        harm(*complete);
        proof.check(*complete);
    });
}

} // namespace

class ReadBackTest : public QObject
{
    Q_OBJECT

private slots:
    // A reader that skips part of the pixels, or forgives what decoders forgive, passes a broken
    // file on.
    void noticesWhateverComesOverTheFile_data()
    {
        QTest::addColumn<QString>("name"); // for TIFF with the code of the compression
        QTest::addColumn<QByteArray>("page");
        QTest::addColumn<int>("from"); // where the pixels begin
        QTest::addColumn<int>("behind"); // bytes at the end that are none of them
        QTest::addColumn<bool>("hasEnd"); // further bytes are noticed
        const auto row = [](const char* name, const char* page, int from, int behind = 0) {
            QTest::newRow((QByteArray(name) + ", " + page).constData())
                << QString::fromLatin1(name) << QByteArray(page) << from << behind
                << !QByteArray(name).endsWith("tiff");
        };
        for (const char* page : { "rgb", "bits=16", "bits=1", "bits=4 orientation=6", "jpeg",
                                  "samples=2 extra=2", "rgb samples=4 extra=1 bits=16", "fax" })
            row("a.png", page, 0);
        // Taken over; the last byte may be filled up with bits.
        row("a.jpg", "jpeg", 623, 3);
        row("a.jpg", "compression=7 orientation=5 rows=8", 328, 3);
        row("a.bmp", "rgb width=4", 54);
        row("a.bmp", "bits=8 width=8", 1078);
        row("a.bmp", "fax width=32", 62);
        // The last byte of the data may have bits behind the end code; the next ones end the file.
        row("a.gif", "rgb width=9 height=9", 13 + 3 * 128 + 12, 3);
        row("a.gif", "samples=2 extra=2 width=9 height=9", 13 + 3 * 128 + 20, 3);
        row("a.gif", "bits=1", 13 + 3 * 2 + 12, 4);
        for (const char* page : { "", "rgb planes=2", "bits=16 samples=3 photometric=2" })
            for (const char* name : { "a.0.tiff", "a.3.tiff", "a.4.tiff" })
                row(name, page, 8, -1);
        row("a.2.tiff", "fax", 8, -1);
        row("a.0.tiff", "tileWidth=16 tileHeight=16 width=32 height=32", 8, -1);
    }
    void noticesWhateverComesOverTheFile()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, page);
        QFETCH(int, from);
        QFETCH(int, behind);
        QFETCH(bool, hasEnd);
        SinglePage source { TestPage(page.constData()) };
        const QString path = source.path(name);
        QCOMPARE(refusal(source, path, Damage::None, 0), QString());
        QVERIFY(!refusal(source, path, Damage::Cut, 0).isNull());
        QCOMPARE(!refusal(source, path, Damage::More, 0).isNull(), hasEnd);
        QVERIFY(source.saves(u"whole"_s + path.mid(path.lastIndexOf(u'.'))));
        qint64 end = QFile(source.path(u"whole"_s + path.mid(path.lastIndexOf(u'.')))).size();
        if (behind < 0) { // the pixels of a TIFF file end where its directory begins
            MultiPageTiffWriter file(path, name.section(u'.', 1, 1).toInt(), 1);
            file.append(source.image().sharedSource());
            std::array<std::uint8_t, 4> link {};
            file.finish()->readAt(4, link);
            end = link[0] | link[1] << 8 | link[2] << 16;
        } else {
            end -= behind;
        }
        QStringList unnoticed;
        for (qint64 at = from; at < end; at += std::max<qint64>(1, (end - from) / 30))
            if (refusal(source, path, Damage::Bit, static_cast<std::uint64_t>(at)).isNull())
                unnoticed.append(QString::number(at));
        // What lies behind the last pixel of an encoded strip, of which there are four, is none.
        const bool hasEndCodes = name.contains(u".3.") || name.contains(u".2.");
        QVERIFY2(unnoticed.size() <= (hasEndCodes ? 4 : 0), qPrintable(unnoticed.join(u' ')));
    }

    // A JPEG file only has to be whole: a decoder that fills up what is missing says so in passing.
    void refusesJpegFilesThatAreNotWhole()
    {
        SinglePage source { TestPage("rgb") };
        const QString path = source.path(u"a.jpg"_s);
        QCOMPARE(refusal(source, path, Damage::None, 0), QString());
        for (const Damage what : { Damage::Cut, Damage::More })
            QVERIFY(refusal(source, path, what, 0).startsWith(u"read back, the file is refused: "));
        QVERIFY(source.saves(u"whole.jpg"_s));
        const QByteArray whole = bytesOf(source.path(u"whole.jpg"_s));
        const qsizetype frame = whole.indexOf("\xFF\xC0");
        for (const qsizetype at : { qsizetype { 0 }, frame + 6, frame + 8, frame + 9 })
            QVERIFY2(!refusal(source, path, Damage::Bit, static_cast<std::uint64_t>(at)).isNull(),
                     qPrintable(QString::number(at)));
    }

    // Strips that are copied are never decoded for the output.
    void decodesStripsThatAreCopied()
    {
        TestPage page("compression=5");
        page.encoded = QList<QByteArray>(4, QByteArray(20, '\xFF'));
        SinglePage source { page };
        const auto image = source.image().sharedSource();
        MultiPageTiffWriter file(source.path(u"a.tiff"_s), 3, 1);
        QCOMPARE(reasonOf([&] { file.append(image); }), QString());
        QVERIFY(!reasonOf([&] { proofOf(*image); }).isNull());
    }
};

QTEST_GUILESS_MAIN(ReadBackTest)
#include "ReadBackTest.moc"
