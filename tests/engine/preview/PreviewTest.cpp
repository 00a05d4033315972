#include "engine/preview/PageFacts.h"
#include "engine/preview/PagePicture.h"
#include "engine/preview/ResultSample.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <tiffio.h>

#include <array>
#include <atomic>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr QSize anySize(1'000'000, 1'000'000);
const IsStopped never = [] { return false; };

/// Where a pixel of the upright page lies in the file (TIFF 6.0, tag Orientation).
QPoint storedPlace(QPoint at, QSize upright, int orientation)
{
    const int x = at.x();
    const int y = at.y();
    const int fromRight = upright.width() - 1 - x;
    const int fromBottom = upright.height() - 1 - y;
    const QPoint places[]
        = { { x, y }, { fromRight, y }, { fromRight, fromBottom }, { x, fromBottom },
            { y, x }, { y, fromRight }, { fromBottom, fromRight }, { fromBottom, x } };
    return places[orientation - 1];
}

struct BoxOfPixels
{
    QPoint first;
    QPoint last;
};

/// Of the file, for pixel `at` of a picture of `size` that shows `region` of the upright page.
/// Boxes begin at whole pixels, counted along the file's rows and columns.
BoxOfPixels boxOf(QPoint at, QSize size, QRect region, QSize upright, int orientation)
{
    const QPoint a = storedPlace(region.topLeft(), upright, orientation);
    const QPoint b = storedPlace(region.bottomRight(), upright, orientation);
    const QPoint from(std::min(a.x(), b.x()), std::min(a.y(), b.y()));
    const QSize all(std::abs(a.x() - b.x()) + 1, std::abs(a.y() - b.y()) + 1);
    const QSize to = orientation >= 5 ? size.transposed() : size;
    const QPoint place = storedPlace(at, size, orientation);
    const auto start = [](int i, int pixels, int boxes) { return i * pixels / boxes; };
    return { from
                 + QPoint(start(place.x(), all.width(), to.width()),
                          start(place.y(), all.height(), to.height())),
             from
                 + QPoint(start(place.x() + 1, all.width(), to.width()) - 1,
                          start(place.y() + 1, all.height(), to.height()) - 1) };
}

/// The sample of 8 bits that a pixel of the file is shown by.
int shownSample(const TestPage& page, QPoint at, int channel)
{
    const auto value = static_cast<int>(page.at(at.x(), at.y(), page.samples == 3 ? channel : 0));
    if (!page.colorMap.empty())
        return page.colorMap[static_cast<std::size_t>(value + 256 * channel)] / 257;
    const int top = static_cast<int>(page.top());
    return (page.photometric == 0 ? top - value : value) * 255 / top;
}

/// What is wrong with the picture; null: nothing.
QString faultOf(const PagePicture& picture, const TestPage& page, QSize upright)
{
    const int orientation = std::max(page.orientation, 1);
    for (int y = 0; y < picture.size.height(); ++y)
        for (int x = 0; x < picture.size.width(); ++x)
            for (int c = 0; c < picture.channels; ++c) {
                const BoxOfPixels box
                    = boxOf({ x, y }, picture.size, picture.region, upright, orientation);
                int sum = 0;
                int count = 0;
                for (int row = box.first.y(); row <= box.last.y(); ++row)
                    for (int column = box.first.x(); column <= box.last.x(); ++column, ++count)
                        sum += shownSample(page, { column, row }, c);
                const int is = picture.samples.at(static_cast<std::size_t>(
                    (y * picture.size.width() + x) * picture.channels + c));
                if (const int wanted = (2 * sum + count) / (2 * count); is != wanted)
                    return u"%1, %2, channel %3: %4, not %5"_s.arg(x).arg(y).arg(c).arg(is).arg(
                        wanted);
            }
    return {};
}

QByteArray bytesIn(ByteFile& file)
{
    QByteArray bytes(static_cast<qsizetype>(file.size()), Qt::Uninitialized);
    file.readAt(0, { reinterpret_cast<std::uint8_t*>(bytes.data()), file.size() });
    return bytes;
}

/// Of a picture that shows `region` at its full size, the samples of one that shows `part` of that
/// with boxes of `side` pixels.
std::vector<std::uint8_t> meansOf(const PagePicture& all, const QRect& part, int side)
{
    std::vector<std::uint8_t> means;
    for (int y = part.top(); y <= part.bottom(); y += side)
        for (int x = part.left(); x <= part.right(); x += side)
            for (int c = 0; c < all.channels; ++c) {
                int sum = 0;
                for (int i = 0; i < side * side; ++i) {
                    const QPoint at = QPoint(x + i % side, y + i / side) - all.region.topLeft();
                    sum += all.samples.at(static_cast<std::size_t>(
                        (at.y() * all.size.width() + at.x()) * all.channels + c));
                }
                means.push_back(
                    static_cast<std::uint8_t>((2 * sum + side * side) / (2 * side * side)));
            }
    return means;
}

class PreviewTest : public QObject
{
    Q_OBJECT

    QString path(const QString& name) const { return m_folder.filePath(name); }
    std::shared_ptr<const OpenTiffFile> open(const QString& name) const
    {
        return PreviewFile(path(name)).open(never);
    }

    QTemporaryDir m_folder;

private slots:
    void picturesAreTheMeansOfBoxes_data();
    void picturesAreTheMeansOfBoxes();
    void damagedPagesSayWhatIsWrong();
    void aStopIsSeenBetweenBands();
    void leftFoldersAreRemoved();
    void openFilesAreThoseOfNow();
    void factsAreThoseOfTheUprightPage();
    void resultsHaveTheBytesOfARun_data();
    void resultsHaveTheBytesOfARun();
    void partsOfResultsLieWhereTheyAre_data();
    void partsOfResultsLieWhereTheyAre();
    void partsOfLargePagesAreEstimated();
};

// Catches wrong strides, boxes, rows before the first one that is wanted, and sides changed about.
void PreviewTest::picturesAreTheMeansOfBoxes_data()
{
    QTest::addColumn<TestPage>("page");
    const auto add = [](const char* words) { QTest::newRow(words) << TestPage(words); };
    for (const char* words :
         { "rows=10", "bits=1", "fax", "bits=4 photometric=0", "rgb compression=5", "rgb planes=2",
           "bits=8 tileWidth=16 tileHeight=16", "rgb compression=8 tileWidth=32 tileHeight=16",
           "rgb compression=32773 rows=7", "width=2300 height=1900 rows=1900",
           "width=2300 height=1900 rows=1900 compression=5", "width=2300 height=1900 rows=16" })
        add(words);
    for (int orientation = 1; orientation <= 8; ++orientation)
        add(QByteArray("rgb orientation=" + QByteArray::number(orientation)).constData());
    TestPage palette("photometric=3");
    for (int i = 0; i < 3 * 256; ++i)
        palette.colorMap.push_back(static_cast<std::uint16_t>((i * 37 + i / 256 * 50) % 256 * 257));
    QTest::newRow("palette") << palette;
}

void PreviewTest::picturesAreTheMeansOfBoxes()
{
    QFETCH(const TestPage, page);
    writeTiff(path(u"a.tif"_s), { page });
    const auto file = open(u"a.tif"_s);
    const QSize stored(page.width, page.height);
    const QSize upright = page.orientation >= 5 ? stored.transposed() : stored;
    const int w = upright.width();
    const int h = upright.height();
    const PictureWish wishes[] = { { 0, {}, { 17, 900 } },
                                   { 0, { w / 3, h / 2, w / 2, h / 4 }, anySize },
                                   { 0, { w / 2 - 3, h / 3, w / 2, h / 2 + 2 }, { 9, 7 } } };
    for (const PictureWish& wish : wishes) {
        const PagePicture picture = pictureOf(file, wish, never);
        QCOMPARE(picture.pageSize, upright);
        QCOMPARE(picture.region, wish.region.isEmpty() ? QRect(QPoint(), upright) : wish.region);
        QCOMPARE(picture.size, reducedSize(picture.region.size(), wish.most));
        QCOMPARE(picture.losses, QStringList());
        QCOMPARE(faultOf(picture, page, upright), QString());
    }
    QCOMPARE(pictureOf(file, wishes[0], never).size.width(), 17);
    QCOMPARE(pictureOf(file, wishes[1], never).size, QSize(w / 2, h / 4));
}

/// Catches a preview that says something else than the run, or shows less than there is as if it
/// were all.
void PreviewTest::damagedPagesSayWhatIsWrong()
{
    const std::pair<const char*, const char*> kinds[]
        = { { "strips", "compression=5" },
            { "plain strips", "rows=33" },
            { "a large plain strip", "width=2300 height=1900 rows=1900" } };
    for (const auto& [name, words] : kinds) {
        writeTiff(path(u"b.tif"_s), { TestPage(words), TestPage(words) });
        QByteArray bytes = bytesOf(path(u"b.tif"_s));
        const auto file = open(u"b.tif"_s);
        QVERIFY2(pictureOf(file, { 1, {}, anySize }, never).losses.isEmpty(), name);
        // While it is open, as by another program.
        QFile(path(u"b.tif"_s)).resize(bytes.size() / 3);
        const QString told = reasonOf([&] { pictureOf(file, { 1, {}, { 10, 10 } }, never); });
        QVERIFY2(!told.isEmpty(), name);
    }
    writeTiff(path(u"c.tif"_s), { TestPage("compression=5") });
    QByteArray bytes = bytesOf(path(u"c.tif"_s));
    bytes.replace(8, 200, QByteArray(200, '\x55'));
    putBytes(path(u"c.tif"_s), bytes);
    TiffDocument document(path(u"c.tif"_s));
    PageImage image = document.page(0);
    QVERIFY(!image.save(path(u"c.png"_s), Settings(nullptr)));
    QCOMPARE(reasonOf([&] {
                 pictureOf(open(u"c.tif"_s), { 0, {}, { 10, 10 } }, never);
             }),
             image.failureReason());
    QVERIFY(!reasonOf([&] { pictureOf(open(u"c.tif"_s), { 1, {}, { 9, 9 } }, never); }).isEmpty());
}

/// Catches work that goes on for a page that nobody looks at any more.
void PreviewTest::aStopIsSeenBetweenBands()
{
    QVERIFY(QDir().mkpath(path(u"tmp"_s)));
    const QByteArray temporary = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(path(u"tmp"_s)));
    const auto back = qScopeGuard([&] { qputenv("TMPDIR", temporary); });
    writeTiff(path(u"a.tif"_s), { TestPage("width=3000 height=1500 rows=10 compression=5") });
    const auto file = open(u"a.tif"_s);
    std::atomic<int> asked = 0;
    const auto soon = [&] { return ++asked > 3; };
    QCOMPARE(reasonOf([&] { pictureOf(file, { 0, {}, { 50, 50 } }, soon); }), u"stopped"_s);
    QVERIFY2(asked < 10, "each thread may ask once more");
    ConversionOptions options;
    asked = 0;
    QCOMPARE(reasonOf([&] { resultSample(file, 0, options, {}, soon); }), u"stopped"_s);
    QVERIFY(asked < 10);

    // Where rows before those that are wanted, or all of the page, are read first.
    writeTiff(path(u"b.tif"_s), { TestPage("width=3000 height=1500 rows=1500 compression=5") });
    const auto single = open(u"b.tif"_s);
    asked = 0;
    QCOMPARE(reasonOf([&] {
                 pictureOf(single, { 0, { 0, 1400, 9, 9 }, anySize }, soon);
             }),
             u"stopped"_s);
    options.outputType = OutputType::Tiff;
    for (const Bilevel bilevel : { Bilevel::None, Bilevel::Otsu }) {
        options.run.treatment.bilevel = bilevel;
        asked = 0;
        QCOMPARE(reasonOf([&] { resultSample(file, 0, options, {}, soon); }), u"stopped"_s);
        QVERIFY(asked < 10);
    }
    QCOMPARE(namesIn(path(u"tmp"_s)), QStringList());
}

/// Catches disks that fill with what killed programs have left, and the loss of what others own.
void PreviewTest::leftFoldersAreRemoved()
{
    const QByteArray temporary = qgetenv("TMPDIR");
    qputenv("TMPDIR", QFile::encodeName(path(u"tmp"_s)));
    const auto back = qScopeGuard([&] { qputenv("TMPDIR", temporary); });
    const auto folder = [&](const QString& name, int mode, bool isOld) {
        const QString made = path(u"tmp/"_s + name);
        QVERIFY(QDir().mkpath(made));
        putBytes(made + u"/.pagestack-1-1.part"_s, "left");
        if (name.endsWith(u"others"_s))
            putBytes(made + u"/mine.txt"_s, "kept");
        QVERIFY(::chmod(QFile::encodeName(made).constData(), static_cast<mode_t>(mode)) == 0);
        const timespec then { isOld ? 1000 : ::time(nullptr), 0 };
        const std::array times { then, then };
        QVERIFY(::utimensat(AT_FDCWD, QFile::encodeName(made).constData(), times.data(), 0) == 0);
    };
    folder(u".pagestack-compare-killed"_s, 0700, true);
    folder(u".pagestack-compare-others"_s, 0700, true);
    folder(u".pagestack-compare-opened"_s, 0755, true);
    folder(u".pagestack-compare-justMd"_s, 0700, false);
    folder(u".pagestack-compare-longer1"_s, 0700, true);
    folder(u"pagestack-output"_s, 0700, true); // a user's
    QVERIFY(QDir().mkpath(path(u"elsewhere"_s)));
    QVERIFY(QFile::link(path(u"elsewhere"_s), path(u"tmp/.pagestack-compare-linked"_s)));
    writeTiff(path(u"a.tif"_s), { TestPage() });
    resultSample(open(u"a.tif"_s), 0, {}, {}, never);
    QCOMPARE(namesIn(path(u"tmp"_s)).join(u' '),
             u".pagestack-compare-justMd .pagestack-compare-linked .pagestack-compare-longer1 "
             ".pagestack-compare-opened .pagestack-compare-others pagestack-output"_s);
    QCOMPARE(namesIn(path(u"tmp/.pagestack-compare-others"_s)).join(u' '), u"mine.txt"_s);
}

/// Catches old pages of a file that was replaced, and waiting for a pipe's other end.
void PreviewTest::openFilesAreThoseOfNow()
{
    int changes = 0;
    PreviewFile file(path(u"a.tif"_s), [&] { ++changes; });
    QFile::remove(path(u"a.tif"_s));
    QVERIFY(reasonOf([&] { file.open(never); }).contains(u"cannot open the file"_s));
    writeTiff(path(u"a.tif"_s), { TestPage() });
    const auto one = file.open(never);
    QCOMPARE(file.open(never), one);
    QCOMPARE(changes, 1);
    writeTiff(path(u"b.tif"_s), { TestPage(), TestPage() });
    QFile::remove(path(u"a.tif"_s));
    QVERIFY(QFile::rename(path(u"b.tif"_s), path(u"a.tif"_s)));
    QCOMPARE(file.open(never)->pageCount(), 2);
    QCOMPARE(changes, 2);
    const QString told = reasonOf([&] { pictureOf(file.open(never), { 2, {}, anySize }, never); });
    QCOMPARE(told, u"the file has no page 3 any more, its last one is 2"_s);
    QCOMPARE(one->pageCount(), 1);
    QCOMPARE(reasonOf([&] { file.open([] { return true; }); }), QString());
    QCOMPARE(::mkfifo(QFile::encodeName(path(u"pipe.tif"_s)).constData(), 0600), 0);
    QCOMPARE(reasonOf([&] { PreviewFile(path(u"pipe.tif"_s)).open(never); }),
             u"it is no regular file"_s);
}

/// Catches sides or resolutions of the stored page, and texts that are cut or garbled.
void PreviewTest::factsAreThoseOfTheUprightPage()
{
    TestPage page("rgb orientation=6 unit=2 xy=300,200 compression=5");
    page.moreTags = [](tiff* to) {
        TIFFSetField(to, TIFFTAG_ARTIST, "J\xc3\xb6rg");
        TIFFSetField(to, TIFFTAG_IMAGEDESCRIPTION, "two\nlines");
        TIFFSetField(to, TIFFTAG_XPOSITION, 2.0);
    };
    writeTiff(path(u"f.tif"_s), { TestPage("bits=1"), page });
    const PageFacts facts = factsOf(open(u"f.tif"_s), 1);
    QCOMPARE(facts.pages, 2);
    QCOMPARE(facts.sizePx, QSize(page.height, page.width));
    QCOMPARE(facts.resolution.x, 200.0);
    QCOMPARE(facts.resolution.y, 300.0);
    QCOMPARE(facts.samplesPerPixel, 3);
    QCOMPARE(facts.compression, u"LZW"_s);
    QCOMPARE(facts.color, u"RGB"_s);
    const QList<std::pair<QString, QString>> texts
        = { { u"ImageDescription"_s, u"two lines"_s }, { u"Artist"_s, u"J\u00f6rg"_s } };
    QCOMPARE(facts.texts, texts);
    QVERIFY(facts.others.contains(u"XPosition"_s));
    QCOMPARE(factsOf(open(u"f.tif"_s), 0).color, u"black and white"_s);
    QByteArray bytes = bytesOf(path(u"f.tif"_s));
    putBytes(path(u"f.tif"_s), bytes.replace(QByteArray("J\xc3\xb6rg\0", 6), "J\xc3\xb6rg!"));
    QCOMPARE(factsOf(open(u"f.tif"_s), 1).texts.last().second, u"J\u00f6rg!"_s);
}

void PreviewTest::resultsHaveTheBytesOfARun_data()
{
    QTest::addColumn<OutputType>("type");
    QTest::addColumn<int>("quality");
    QTest::addColumn<QByteArray>("kind");
    QTest::newRow("jpg") << OutputType::Jpeg << 3 << QByteArray("rgb");
    QTest::newRow("jpg, taken over") << OutputType::Jpeg << 10 << QByteArray("jpeg width=208");
    QTest::newRow("png") << OutputType::Png << 3 << QByteArray("rgb");
    QTest::newRow("tiff") << OutputType::Tiff << 3 << QByteArray("rgb");
    QTest::newRow("bmp") << OutputType::Bmp << 3 << QByteArray("rgb");
    QTest::newRow("gif") << OutputType::Gif << 3 << QByteArray("rgb");
}

/// Catches options that the comparison forgets.
void PreviewTest::resultsHaveTheBytesOfARun()
{
    QFETCH(const OutputType, type);
    QFETCH(const int, quality);
    QFETCH(const QByteArray, kind);
    TestPage page("smooth orientation=8 xy=72,72 width=200 " + kind);
    page.moreTags = [before = page.moreTags](tiff* to) {
        if (before)
            before(to);
        TIFFSetField(to, TIFFTAG_ARTIST, "somebody");
    };
    writeTiff(path(u"a.tif"_s), { page });
    ConversionOptions options;
    options.outputType = type;
    options.jpegQuality = quality;
    options.tiffCompression = TiffCompression::Lzw;
    options.run.treatment.bilevel = Bilevel::Otsu;
    options.run.treatment.stripsMetadata = type == OutputType::Jpeg;
    Settings settings(nullptr);
    applyTo(settings, options);
    const QString target = path(u"a"_s + fileExtension(static_cast<int>(type)));
    PageTreatment treatment = options.run.treatment;
    if (type == OutputType::Jpeg) // which black and white is idle for
        treatment.bilevel = Bilevel::None;
    TiffDocument document(path(u"a.tif"_s), treatment);
    QVERIFY(document.page(0).save(target, settings));

    const ResultSample sample = resultSample(open(u"a.tif"_s), 0, options, {}, never);
    QCOMPARE(sample.bytes, bytesOf(target).size());
    QVERIFY(!sample.isEstimated);
    QCOMPARE(sample.region, QRect(0, 0, page.height, page.width));
    if (type != OutputType::Tiff)
        QCOMPARE(bytesIn(*sample.file->bytes()), bytesOf(target));
    QVERIFY(sample.losses.isEmpty());
}

// Catches bands or parts of a result at another place, its last rows first, and other colours.
void PreviewTest::partsOfResultsLieWhereTheyAre_data()
{
    QTest::addColumn<OutputType>("type");
    QTest::addColumn<QByteArray>("kind");
    QTest::newRow("jpg") << OutputType::Jpeg << QByteArray("rgb smooth");
    QTest::newRow("jpg, gray") << OutputType::Jpeg << QByteArray("smooth");
    QTest::newRow("jpg, taken over") << OutputType::Jpeg << QByteArray("jpeg smooth");
    QTest::newRow("png") << OutputType::Png << QByteArray("rgb");
    QTest::newRow("png, packed") << OutputType::Png << QByteArray("bits=1");
    QTest::newRow("png, deep") << OutputType::Png << QByteArray("rgb bits=16");
    QTest::newRow("png, alpha") << OutputType::Png << QByteArray("samples=4 photometric=2 extra=2");
    QTest::newRow("tiff") << OutputType::Tiff << QByteArray("rgb");
    QTest::newRow("bmp") << OutputType::Bmp << QByteArray("rgb");
    QTest::newRow("bmp, packed") << OutputType::Bmp << QByteArray("bits=1");
    QTest::newRow("bmp, gray") << OutputType::Bmp << QByteArray("bits=4");
    QTest::newRow("gif") << OutputType::Gif << QByteArray("bits=8");
    QTest::newRow("gif, alpha") << OutputType::Gif << QByteArray("samples=4 photometric=2 extra=2");
}

void PreviewTest::partsOfResultsLieWhereTheyAre()
{
    QFETCH(const OutputType, type);
    QFETCH(const QByteArray, kind);
    TestPage page("orientation=8 width=416 height=624 " + kind);
    if (kind.contains("extra")) // which a pixel has all of, or none
        page.sample = [last = page.samples - 1](int x, int y, int c) {
            return c < last ? static_cast<std::uint64_t>((x + 3 * y) % 120 + 50 * c)
                            : (x / 20 + y / 30) % 2 * 255U;
        };
    writeTiff(path(u"p.tif"_s), { page });
    const auto file = open(u"p.tif"_s);
    ConversionOptions options;
    options.outputType = type;
    options.jpegQuality = 10;
    const ResultSample sample = resultSample(file, 0, options, {}, never);
    PagePicture all = pictureOf(file, { 0, {}, anySize }, never);
    if (type == OutputType::Jpeg) {
        putBytes(path(u"p.jpg"_s), bytesIn(*sample.file->bytes()));
        const Picture shown = readPicture(path(u"p.jpg"_s));
        QCOMPARE(QSize(shown.width, shown.height), all.size);
        all.channels = shown.channels;
        all.samples.assign(shown.samples.begin(), shown.samples.end());
    }
    const std::pair<PictureWish, int> wishes[] = { { { 0, {}, anySize }, 1 },
                                                   { { 0, {}, { 312, 208 } }, 2 },
                                                   { { 0, { 301, 17, 90, 300 }, anySize }, 1 },
                                                   { { 0, { 40, 396, 584, 20 }, { 146, 5 } }, 4 } };
    for (const auto& [wish, side] : wishes) {
        const PagePicture picture = pictureOf(sample, wish, never);
        const QRect region = wish.region.isEmpty() ? QRect(0, 0, 624, 416) : wish.region;
        QCOMPARE(picture.pageSize, QSize(624, 416));
        QCOMPARE(picture.region, region);
        QCOMPARE(picture.size, region.size() / side);
        QCOMPARE(picture.channels, all.channels);
        QVERIFY(picture.samples == meansOf(all, region, side));
        QVERIFY(picture.hasParts);
    }
    std::atomic<int> asked = 0;
    QCOMPARE(reasonOf([&] { pictureOf(sample, wishes[0].first, [&] { return ++asked > 1; }); }),
             u"stopped"_s);
}

/// Catches parts of the wrong place of a page that is turned, packed pixels that are shifted, and
/// edges that no part reaches.
void PreviewTest::partsOfLargePagesAreEstimated()
{
    TestPage page("bits=1 orientation=6 width=5600 height=4100 rows=100");
    page.sample = [](int x, int y, int) { return x > 3333 && y < 2222 ? 1U : 0U; };
    writeTiff(path(u"l.tif"_s), { page });
    ConversionOptions options;
    options.outputType = OutputType::Tiff;
    const auto file = open(u"l.tif"_s);
    const ResultSample sample = resultSample(file, 0, options, { 1900, 3300 }, never);
    QVERIFY(sample.isEstimated);
    QVERIFY(sample.region.contains(QPoint(1900, 3300)));
    QCOMPARE(sample.region.size(), QSize(2048, 2048));
    const QPoint corner(4099, 5599);
    QVERIFY(resultSample(file, 0, options, corner, never).region.contains(corner));
    const double wanted = 5600.0 * 4100 / 8;
    QVERIFY(std::abs(static_cast<double>(sample.bytes) - wanted) < wanted / 100);
    const PagePicture part = pictureOf(file, { 0, sample.region, anySize }, never);
    QVERIFY(std::ranges::count(part.samples, 0) > 0 && std::ranges::count(part.samples, 255) > 0);
    for (const OutputType type : { OutputType::Tiff, OutputType::Png }) {
        options.outputType = type;
        const ResultSample made = resultSample(file, 0, options, { 1900, 3300 }, never);
        const PagePicture shown = pictureOf(made, { 0, {}, anySize }, never);
        QCOMPARE(shown.region, part.region);
        QCOMPARE(shown.pageSize, part.pageSize);
        QVERIFY(shown.samples == part.samples);
        const QRect inside(1860, part.region.bottom() - 9, 99, 40); // and out of it below
        const PagePicture cut = pictureOf(made, { 0, inside, { 33, 9 } }, never);
        QCOMPARE(cut.region, inside.intersected(part.region));
        QCOMPARE(cut.size, QSize(33, 3));
        QVERIFY(pictureOf(made, { 0, { 0, 0, 5, 5 }, anySize }, never).samples.empty());
    }
    options.outputType = OutputType::Tiff;

    // CMYK is kept in TIFF, and the part of it shown in three colours.
    TestPage cmyk("photometric=5 samples=4 width=5600 height=4100 rows=100");
    cmyk.encoded = QList<QByteArray>(41, QByteArray(5600 * 100 * 4, 'c'));
    TestPage wide("bits=1 width=70000 height=300 rows=300");
    wide.encoded = { QByteArray(8750 * 300, '\0') };
    writeTiff(path(u"c.tif"_s), { cmyk, wide });
    const auto others = open(u"c.tif"_s);
    const auto bytesOfWhole
        = static_cast<double>(resultSample(others, 0, options, {}, never).bytes);
    QVERIFY(std::abs(bytesOfWhole / (5600.0 * 4100 * 4) - 1) < 0.01);
    options.outputType = OutputType::Jpeg;
    const QString told = reasonOf([&] { resultSample(others, 1, options, {}, never); });
    QVERIFY(told.contains(u"70000"_s));

    // A page that a run takes over: encoded anew, its file would be several times as large.
    TestPage strip("compression=7 rows=16 height=16 width=5600");
    strip.moreTags = [](tiff* to) { TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0); };
    writeTiff(path(u"s.tif"_s), { strip });
    const QByteArray encoded = readTiff(path(u"s.tif"_s)).value(0).encoded;
    strip.height = 4096;
    strip.encoded = QList<QByteArray>(256, encoded);
    writeTiff(path(u"j.tif"_s), { strip });
    const ResultSample joined = resultSample(open(u"j.tif"_s), 0, options, { 2800, 2000 }, never);
    QVERIFY(joined.isEstimated);
    QVERIFY(std::abs(static_cast<double>(joined.bytes) / (256.0 * double(encoded.size())) - 1)
            < 0.15);
}

} // namespace

QTEST_GUILESS_MAIN(PreviewTest)
#include "PreviewTest.moc"
