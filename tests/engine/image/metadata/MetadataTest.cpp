#include "engine/image/metadata/ExifBlock.h"
#include "engine/image/metadata/ImageResources.h"
#include "engine/image/metadata/MetadataReader.h"
#include "engine/image/metadata/XmpPacket.h"
#include "engine/image/tiff/OpenTiffFile.h"
#include "tests/support/TiffBuilder.h"

#include <QTest>

using namespace pagestack;
using namespace Qt::StringLiterals;

namespace {

constexpr unsigned exifTag = 34665;
constexpr unsigned gpsTag = 34853;
constexpr unsigned interoperabilityTag = 40965;
constexpr unsigned noteTag = 37500;
constexpr std::uint32_t dataAt = 8; ///< the header is before it

QByteArray directory(const QList<TiffEntry>& entries)
{
    return rawTiff({}, entries, { -1 }).mid(dataAt);
}

/// "1 2": the tags of entries.
QString tagsOf(const std::vector<MetadataEntry>& entries)
{
    QStringList tags;
    for (const MetadataEntry& entry : entries)
        tags.append(QString::number(entry.tag));
    return tags.join(u' ');
}

} // namespace

class MetadataTest : public QObject
{
    Q_OBJECT

private slots:
    void takesWhatTheFileHasAndNoMore_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QList<TiffEntry>>("entries");
        QTest::addColumn<QString>("found"); // tags of Exif, of GPS, names of what is left out
        const TiffEntry plain { 41986, 1, 1, 3 };
        const TiffEntry exif { exifTag, dataAt };
        const auto row = [](const char* name, const QByteArray& data,
                            const QList<TiffEntry>& entries, const char* found) {
            QTest::newRow(name) << data << entries << QString::fromLatin1(found);
        };
        const auto exifRow = [&](const char* name, const TiffEntry& entry, const char* found,
                                 const QByteArray& more = {}) {
            row(name, directory({ plain, entry }) + more, { exif }, found);
        };
        const std::uint32_t behind = dataAt + 2 + 2 * 12 + 4; // a directory of two entries
        exifRow("sound", { 33434, behind, 1, 5 }, "33434 41986||", "\1\0\0\0\2\0\0\0"_ba);
        row("beyond the end of the file", {}, { { exifTag, 1'000'000'000 } }, "||");
        row("in the header", {}, { { exifTag, 0 } }, "||");
        row("the page's own directory", {}, { exif }, "||");
        row("cut at the end of the file", {}, { { exifTag, dataAt + 20 } }, "||");
        row("a pointer of two numbers", directory({ plain }), { { exifTag, dataAt, 2 } }, "||");
        row("one directory for both", directory({ plain }), { exif, { gpsTag, dataAt } },
            "41986||");
        row("overlapping directories", directory({ plain, plain }),
            { exif, { gpsTag, dataAt + 12 } }, "41986||");
        exifRow("leads back", { interoperabilityTag, dataAt }, "41986||InteroperabilityIFD");
        exifRow("a huge count", { 33434, behind, 0xFFFFFFFF, 5 }, "41986||Exif tag 33434");
        exifRow("no value", { 33434, behind, 0, 5 }, "41986||Exif tag 33434");
        exifRow("an unknown type", { 33434, behind, 1, 99 }, "41986||Exif tag 33434");
        exifRow("a value outside of the file", { 33434, 0xFFFFFFFF, 1, 5 },
                "41986||Exif tag 33434");
        exifRow("a tag twice", { 41986, 2, 1, 3 }, "41986||");
        exifRow("a note with places in the file", { noteTag, behind, 8, 7 }, "41986||MakerNote",
                "\6\0\1\0\3\0\0\0"_ba);
        exifRow("a note with places in itself", { noteTag, behind, 8, 7 }, "37500 41986||",
                "Nikon\0\2\x10"_ba);
        row("too many entries", directory(QList<TiffEntry>(1001, plain)), { exif }, "||");
        // Each may be held, all five of them not.
        const QByteArray large(16 * 1024 * 1024, 'x');
        const auto size = static_cast<std::uint32_t>(large.size());
        QList<TiffEntry> many;
        for (unsigned tag = 1; tag <= 5; ++tag)
            many.append({ tag, dataAt, size, 7 });
        row("more than should be held", large + directory(many), { { exifTag, dataAt + size } },
            "1 2 3||Exif tag 4, Exif tag 5");
        row("a value that is too large",
            large + "x" + directory({ { 1, dataAt, size + 1, 7 }, plain }),
            { { exifTag, dataAt + size + 1 } }, "41986||Exif tag 1");
    }

    // A reader that trusts a place or a count reads what is no metadata, for ever, or dies of it.
    void takesWhatTheFileHasAndNoMore()
    {
        QFETCH(const QByteArray, data);
        QFETCH(const QList<TiffEntry>, entries);
        const QString path = m_folder.filePath(u"page.tif"_s);
        putBytes(path, rawTiff({}, entries, { -1 }, data));
        const OpenTiffFile file(path);
        const PageMetadata read = readMetadata(file, file.directory(0), MetadataUse::Shown);
        QTEST(QStringList({ tagsOf(read.exif), tagsOf(read.gps), read.leftOut.join(u", ") })
                  .join(u'|'),
              "found");
        QCOMPARE(read.heldTags.contains(exifTag), !read.exif.empty());
        QStringList dropped;
        QVERIFY(exifBlock(read, PageProperties(), 1000, dropped).size() <= 1000);
    }

    // Viewers would take converted pixels for those of the camera's own colour space.
    void tellsOfSrgbWherePixelsBecomeIt()
    {
        constexpr unsigned spaceTag = 40961;
        const std::uint32_t behind = dataAt + 2 + 2 * 12 + 4;
        const QByteArray exif
            = directory({ { spaceTag, 0xFFFF, 1, 3 }, { interoperabilityTag, behind } });
        const QByteArray rules = directory({ { 1, 0x333052, 4, 2 } }); // "R03"
        const auto bitsAt = static_cast<std::uint32_t>(dataAt + exif.size() + rules.size());
        const QString path = m_folder.filePath(u"lab.tif"_s);
        putBytes(path,
                 rawTiff({},
                         { { 256, 1 },
                           { 257, 1 },
                           { 258, bitsAt, 3, 3 },
                           { 262, 8 }, // L*a*b*
                           { 273, bitsAt },
                           { 277, 3 },
                           { 279, 3 },
                           { exifTag, dataAt } },
                         { -1 }, exif + rules + "\x08\0\x08\0\x08\0"_ba));
        for (const bool isConverted : { false, true }) {
            const TiffDocument document(path, { .convertsToSrgb = isConverted });
            const auto read = document.page(0).source().metadata();
            QVERIFY(read && read->exif.size() == 1 && read->exif[0].tag == spaceTag);
            QCOMPARE(read->exif[0].bytes, isConverted ? "\1\0"_ba : "\xFF\xFF"_ba);
            QCOMPARE(read->interoperability.empty(), isConverted);
        }
    }

    // Viewers would turn pixels that are upright already; the rest of a packet is not ours.
    void setsTheOrientationOfXmpAndNothingElse()
    {
        const QByteArray space = "xmlns:t='http://ns.adobe.com/tiff/1.0/' ";
        for (const auto& [before, after] : {
                 std::pair("<r " + space + "t:Orientation=\"6\"/>",
                           "<r " + space + "t:Orientation=\"1\"/>"),
                 { "<r " + space + "><t:Orientation> 8 </t:Orientation>",
                   "<r " + space + "><t:Orientation> 1 </t:Orientation>" },
                 { "<r " + space + "u:Orientation='6' t:Make='t:Orientation 6'/>",
                   "<r " + space + "u:Orientation='6' t:Make='t:Orientation 6'/>" },
             })
            QCOMPARE(uprightXmp(before), after);
    }

    // What is cut must be put together again by readers, from the packet without its wrapper.
    void namesWhatIsTooLongForAPacket()
    {
        const QByteArray text = "<x>" + QByteArray(200, 'y') + "</x>";
        const QByteArray packet
            = "<?xpacket begin='' id='W'?>\n" + text + QByteArray(99, ' ') + "<?xpacket end='w'?>";
        QCOMPARE(xmpParts(packet, packet.size()).extended, QByteArray());
        QVERIFY(withoutPadding(packet).size() < packet.size() - 90);
        const XmpParts parts = xmpParts(packet, 100);
        QCOMPARE(parts.extended, text);
        QVERIFY(parts.standard.contains("HasExtendedXMP=\"" + parts.digest + '"'));
    }

    void keepsBlocksOfImageResourcesUpToTheFirstDamage()
    {
        const QByteArray caption = "8BIM\4\x0B\0\0\0\0\0\3url\0"_ba;
        const QByteArray thumbnail = "8BIM\4\x0C\0\0\0\0\0\1t\0"_ba;
        const QByteArray iptc = "8BIM\4\4\0\0\0\0\0\3\x1C\2\0\0"_ba;
        const QByteArray oldIptc = "8BIM\4\4\1n\0\0\0\1o\0"_ba;
        const QByteArray cut = "8BIM\4\x0B\0\0\0\0\1\0url"_ba;
        PageMetadata page;
        page.iptc = "\x1C\2\0"_ba;
        for (const QByteArray& end : { ""_ba, "\0"_ba, cut, "8BIM"_ba }) {
            page.imageResources = thumbnail + oldIptc + caption + end;
            QStringList leftOut;
            QCOMPARE(imageResources(page, leftOut), iptc + caption);
            QCOMPARE(leftOut.join(u' '), end.size() > 1 ? u"Photoshop"_s : QString());
        }
    }

private:
    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(MetadataTest)
#include "MetadataTest.moc"
