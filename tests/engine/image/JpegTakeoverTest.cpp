#include "engine/image/PageEncoding.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/formats/Encoders.h"
#include "engine/image/formats/JpegBlocks.h"
#include "tests/support/PeakMemory.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <cstdio>
#include <jpeglib.h>
#include <tiffio.h>

namespace {

/// The blocks of a component, as libjpeg by itself reads them.
struct Plane
{
    std::size_t across = 0;
    std::vector<std::array<short, 64>> blocks;
    int horizontal = 1;
    int vertical = 1;

    friend bool operator==(const Plane&, const Plane&) = default;
};

struct Stream
{
    std::vector<Plane> planes;
    std::vector<std::vector<int>> quantization;
    int colors = 0; ///< J_COLOR_SPACE
    long warnings = 0;
};

Stream streamOf(const QByteArray& bytes, const QByteArray& tables = {})
{
    Stream stream;
    jpeg_error_mgr errors = {};
    jpeg_decompress_struct codec = {};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    const auto read = [&](const QByteArray& from, boolean isImage) {
        jpeg_mem_src(&codec, reinterpret_cast<const unsigned char*>(from.constData()),
                     static_cast<unsigned long>(from.size()));
        jpeg_read_header(&codec, isImage);
    };
    if (!tables.isEmpty())
        read(tables, FALSE);
    read(bytes, TRUE);
    jvirt_barray_ptr* arrays = jpeg_read_coefficients(&codec);
    for (int c = 0; c < codec.num_components; ++c) {
        const jpeg_component_info& from = codec.comp_info[c];
        Plane plane { from.width_in_blocks, {}, from.h_samp_factor, from.v_samp_factor };
        for (JDIMENSION y = 0; y < from.height_in_blocks; ++y) {
            JBLOCKROW row = codec.mem->access_virt_barray(reinterpret_cast<j_common_ptr>(&codec),
                                                          arrays[c], y, 1, FALSE)[0];
            for (JDIMENSION x = 0; x < from.width_in_blocks; ++x)
                plane.blocks.push_back(std::to_array(row[x]));
        }
        stream.planes.push_back(plane);
        const UINT16* steps = from.quant_table->quantval;
        stream.quantization.emplace_back(steps, steps + DCTSIZE2);
    }
    stream.colors = codec.jpeg_color_space;
    stream.warnings = errors.num_warnings;
    jpeg_destroy_decompress(&codec);
    return stream;
}

/// Puts the strips or tiles of a page together, each read by itself.
Stream joinedStreams(const QString& path)
{
    TIFF* file = TIFFOpen(QFile::encodeName(path).constData(), "r");
    std::uint32_t tableBytes = 0;
    void* tables = nullptr;
    TIFFGetField(file, TIFFTAG_JPEGTABLES, &tableBytes, &tables);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t pieceWidth = 0;
    TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &height);
    const bool isTiled = TIFFGetField(file, TIFFTAG_TILEWIDTH, &pieceWidth) == 1;
    const std::uint32_t piecesAcross = isTiled ? (width - 1) / pieceWidth + 1 : 1;
    Stream whole;
    const std::uint32_t count = isTiled ? TIFFNumberOfTiles(file) : TIFFNumberOfStrips(file);
    std::vector<std::size_t> top(3);
    for (std::uint32_t i = 0; i < count; ++i) {
        QByteArray bytes(static_cast<qsizetype>(TIFFGetStrileByteCount(file, i)), '\0');
        (isTiled ? TIFFReadRawTile : TIFFReadRawStrip)(file, i, bytes.data(), bytes.size());
        const Stream piece
            = streamOf(bytes, QByteArray(static_cast<char*>(tables), static_cast<int>(tableBytes)));
        const auto unit = [&](int Plane::*factor) {
            return static_cast<unsigned>(8 * piece.planes[0].*factor);
        };
        if (i == 0)
            whole.quantization = piece.quantization;
        for (std::size_t c = 0; c < piece.planes.size(); ++c) {
            const Plane& from = piece.planes[c];
            if (i == 0) {
                const auto blocks = [](std::uint32_t pixels, int factor, unsigned unitPx) {
                    return (pixels * static_cast<unsigned>(factor) + unitPx - 1) / unitPx;
                };
                Plane plane { blocks(width, from.horizontal, unit(&Plane::horizontal)),
                              {},
                              from.horizontal,
                              from.vertical };
                plane.blocks.resize(plane.across
                                    * blocks(height, from.vertical, unit(&Plane::vertical)));
                whole.planes.push_back(plane);
            }
            Plane& to = whole.planes[c];
            const std::size_t left = i % piecesAcross * from.across;
            for (std::size_t at = 0; at < from.blocks.size(); ++at) {
                const std::size_t x = left + at % from.across;
                const std::size_t place = (top[c] + at / from.across) * to.across + x;
                if (x < to.across && place < to.blocks.size())
                    to.blocks[place] = from.blocks[at];
            }
            if ((i + 1) % piecesAcross == 0)
                top[c] += from.blocks.size() / from.across;
        }
    }
    TIFFClose(file);
    return whole;
}

/// Saves the page; whether its data were taken over.
bool isTakenOver(PageImage& image, const QString& path, const SaveOptions& options = {})
{
    const auto source = image.sharedSource();
    encodedPage(source, path, pageEncoding(path), options)->commit(StagedFile::Existing::Replaced);
    return image.takeDiagnostics().isTakenOver;
}

bool isTakenOver(SinglePage& page, const QString& name, const SaveOptions& options = {})
{
    return isTakenOver(page.image(), page.path(name), options);
}

/// Whether the codes of the page's streams are taken over with the coefficients.
bool hasCodes(SinglePage& page)
{
    try {
        const auto blocks = page.image().sharedSource()->jpegBlocks();
        if (!blocks->hasCodes())
            return false;
        blocks->readCodes([](std::span<const std::uint8_t>) {});
    } catch (const UnfitBlocks&) {
        return false;
    }
    return true;
}

/// A sample of the upright page by the one at its stored place.
std::uint64_t uprightSample(const TestPage& page, int x, int y, int c)
{
    const int right = page.width - 1;
    const int bottom = page.height - 1;
    switch (page.orientation) {
    case 2:
        return page.at(right - x, y, c);
    case 3:
        return page.at(right - x, bottom - y, c);
    case 4:
        return page.at(x, bottom - y, c);
    case 5:
        return page.at(y, x, c);
    case 6:
        return page.at(y, bottom - x, c);
    case 7:
        return page.at(right - y, bottom - x, c);
    case 8:
        return page.at(right - y, x, c);
    default:
        return page.at(x, y, c);
    }
}

/// A gray stream of 64 x 8 pixels by the standard's codes, as libjpeg writes it after `change`.
QByteArray grayStream(const std::function<void(jpeg_compress_struct&)>& change)
{
    jpeg_error_mgr errors = {};
    jpeg_compress_struct codec = {};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &bytes, &size);
    codec.image_width = 64;
    codec.image_height = 8;
    codec.input_components = 1;
    codec.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&codec);
    change(codec);
    codec.write_JFIF_header = FALSE;
    jpeg_start_compress(&codec, TRUE);
    for (unsigned y = 0; y < codec.image_height; ++y) {
        std::array<unsigned char, 64> row {};
        for (unsigned x = 0; x < row.size(); ++x)
            row.at(x) = static_cast<unsigned char>(x * 3 + y * 5);
        JSAMPROW line = row.data();
        jpeg_write_scanlines(&codec, &line, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    const QByteArray stream(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(size));
    std::free(bytes);
    return stream;
}

/// Three rows that are the first of eight.
class TornRows : public RowSource
{
public:
    TornRows()
        : RowSource(64, 8, {})
    {
    }
    Band nextBand() override { return { m_samples.data(), m_isRead++ ? 0 : 3, 64 }; }

private:
    std::array<std::uint8_t, 192> m_samples {};
    int m_isRead = 0;
};

void encodeWithTail(UprightPage& page, JpegBlocks& blocks, StagedFile& file)
{
    encodeJpegBlocks(page, blocks, file);
    file.write(std::array<std::uint8_t, 1> {});
}

void setQuality(TestPage& page, int quality)
{
    page.moreTags = [before = page.moreTags, quality](TIFF* to) {
        if (before)
            before(to);
        TIFFSetField(to, TIFFTAG_JPEGQUALITY, quality);
    };
}

} // namespace

class JpegTakeoverTest : public QObject
{
    Q_OBJECT

private slots:
    // Blocks at the wrong place, tables of other components, colours by the wrong marker, blocks
    // that are missing at sides which are no multiples of MCUs, a density that is lost.
    void joinsTheCoefficients_data()
    {
        // The tables that strips share: quantization (1) and codes (2), which fit the data else.
        addTextRows(R"(
jpeg | 3
jpeg rows=33 | 1
jpeg | 0
jpeg rows=32 | 1
jpeg rows=33 | 3
jpeg tileWidth=32 tileHeight=16 | 3
jpeg width=45 height=34 tileWidth=16 tileHeight=32 | 3
compression=7 rows=8 | 3
compression=7 tileWidth=16 tileHeight=32 | 3
rgb compression=7 rows=8 | 3
rgb compression=7 tileWidth=32 tileHeight=32 | 3
)");
    }

    void joinsTheCoefficients()
    {
        const auto [text, tables] = textRow<2>();
        TestPage page((text + u" smooth xy=204,98 unit=2"_s).toLatin1().constData());
        page.moreTags = [before = page.moreTags, mode = tables.toInt()](TIFF* to) {
            if (before)
                before(to);
            TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, mode);
        };
        SinglePage single(page);
        QVERIFY(isTakenOver(single, u"a.jpg"_s, { .verifies = true }));
        const Stream wanted = joinedStreams(single.path(u"page.tif"_s));
        const Stream found = streamOf(bytesOf(single.path(u"a.jpg"_s)));
        QVERIFY(found.planes == wanted.planes);
        QVERIFY(found.quantization == wanted.quantization);
        QCOMPARE(found.warnings, 0);
        const J_COLOR_SPACE colors = page.samples == 1 ? JCS_GRAYSCALE
            : page.photometric == 6                    ? JCS_YCbCr
                                                       : JCS_RGB;
        QCOMPARE(found.colors, int { colors });
        const Picture picture = readPicture(single.path(u"a.jpg"_s));
        QCOMPARE(difference(
                     picture, { page.width, page.height, page.samples, 8 },
                     [&](int x, int y, int c) { return double(page.at(x, y, c)); }, 20),
                 QString());
        if (colors == JCS_RGB) // it has no other place there
            QVERIFY(bytesOf(single.path(u"a.jpg"_s)).contains(QByteArray("\xCC\0\0\0\1\0\0\0", 8)));
        else
            QCOMPARE(picture.density, (std::array { 1, 204, 98 }));
    }

    // Codes that are lost or repeated where a stream does not fit into the buffers, or goes on
    // beside another one; what is outside of the image and stays between two rows.
    void joinsLongCodes_data()
    {
        addTextRows(R"(
jpeg width=633 height=402 rows=402
jpeg width=633 height=402 rows=16
jpeg width=1100 height=300 tileWidth=512 tileHeight=288
width=1100 height=600 compression=7 tileWidth=768 tileHeight=512
rgb compression=7 width=500 height=400 rows=200
)");
    }

    void joinsLongCodes()
    {
        const auto [text] = textRow<1>();
        SinglePage single { TestPage(text.toLatin1().constData()) };
        QVERIFY(hasCodes(single));
        QVERIFY(isTakenOver(single, u"a.jpg"_s));
        const Stream found = streamOf(bytesOf(single.path(u"a.jpg"_s)));
        QVERIFY(found.planes == joinedStreams(single.path(u"page.tif"_s)).planes);
        QCOMPARE(found.warnings, 0);
    }

    // Pages that are turned to the wrong side, and sides with a part of an MCU that comes first.
    void turnsByTheCoefficients()
    {
        const std::set<int> needWidth { 2, 3, 7, 8 };
        const std::set<int> needHeight { 3, 4, 6, 7 };
        for (int orientation = 1; orientation <= 8; ++orientation)
            for (const QByteArray size : { "width=48 height=32", "width=47 height=32",
                                           "width=48 height=23", "width=47 height=23" }) {
                TestPage page("jpeg smooth " + size);
                page.orientation = orientation;
                SinglePage single(page);
                const bool isWhole = (page.width == 48 || needWidth.count(orientation) == 0)
                    && (page.height == 32 || needHeight.count(orientation) == 0);
                QCOMPARE(isTakenOver(single, u"a.jpg"_s, { .verifies = true }), isWhole);
                const int width = orientation < 5 ? page.width : page.height;
                const int height = orientation < 5 ? page.height : page.width;
                QCOMPARE(
                    difference(
                        readPicture(single.path(u"a.jpg"_s)), { width, height, 3, 8 },
                        [&](int x, int y, int c) { return double(uprightSample(page, x, y, c)); },
                        20),
                    QString());
            }
    }

    // What a JPEG file of the same coefficients would not show.
    void encodesAnewWhatChanges_data()
    {
        addTextRows(R"(
photometric=0 compression=7 rows=8              |
rgb compression=7 rows=8 planes=2               |
photometric=5 samples=4 compression=7 rows=8    |
samples=2 extra=2 compression=7 rows=8          |
jpeg                                            | range
jpeg                                            | coefficients
rgb compression=7 rows=8 xy=2,1 unit=1          |
jpeg                                            | coarse
jpeg                                            | tables
jpeg                                            | quality
jpeg                                            | reencode
)");
    }

    void encodesAnewWhatChanges()
    {
        const auto [text, change] = textRow<2>();
        TestPage page((text + u" smooth"_s).toLatin1().constData());
        SaveOptions options;
        if (change == u"range" || change == u"coefficients")
            page.moreTags = [before = page.moreTags, change = change](TIFF* to) {
                before(to);
                std::array range { 16.F, 235.F, 128.F, 240.F, 128.F, 240.F };
                std::array weights { 0.2126F, 0.7152F, 0.0722F };
                if (change == u"range")
                    TIFFSetField(to, TIFFTAG_REFERENCEBLACKWHITE, range.data());
                else
                    TIFFSetField(to, TIFFTAG_YCBCRCOEFFICIENTS, weights.data());
            };
        if (change == u"coarse")
            setQuality(page, 5);
        if (change == u"tables") { // each strip has its own, of two qualities
            QTemporaryDir folder;
            QList<QByteArray> strips;
            for (const int quality : { 50, 90 }) {
                TestPage strip("jpeg smooth height=16");
                setQuality(strip, quality);
                strip.moreTags = [before = strip.moreTags](TIFF* to) {
                    before(to);
                    TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0);
                };
                writeTiff(folder.filePath(u"s.tif"_s), { strip });
                strips.append(readTiff(folder.filePath(u"s.tif"_s)).value(0).encoded);
            }
            page.height = 32;
            page.encoded = strips;
            page.moreTags = [](TIFF* to) { TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0); };
        }
        if (change == u"quality")
            options.jpegQuality = 9;
        options.reencodes = change == u"reencode";
        SinglePage single(page);
        QVERIFY(!isTakenOver(single, u"a.jpg"_s, options));
        options.reencodes = true;
        isTakenOver(single, u"b.jpg"_s, options);
        QCOMPARE(bytesOf(single.path(u"a.jpg"_s)), bytesOf(single.path(u"b.jpg"_s)));
    }

    // Data that go wrong when part of the file is written: it has to be begun anew, whole, with the
    // warning of a decoder.
    void leavesDamagedDataToTheDecoder()
    {
        TestPage page("compression=7 rows=8 height=32 smooth");
        page.moreTags = [](TIFF* to) { TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0); };
        QTemporaryDir folder;
        TestPage one = page;
        one.height = 8;
        writeTiff(folder.filePath(u"s.tif"_s), { one });
        const QByteArray strip = readTiff(folder.filePath(u"s.tif"_s)).value(0).encoded;
        QByteArray longer = strip;
        longer.insert(longer.size() - 2, "what is this");
        page.encoded = { strip, strip, strip, longer };
        SinglePage single(page);
        QVERIFY(single.saves(u"a.jpg"_s));
        const PageDiagnostics found = single.image().takeDiagnostics();
        QVERIFY(!found.isTakenOver);
        QCOMPARE(found.warnings, QStringList(TiffMessages::jpegTailWarning()));
        isTakenOver(single, u"b.jpg"_s, { .reencodes = true });
        QCOMPARE(bytesOf(single.path(u"a.jpg"_s)), bytesOf(single.path(u"b.jpg"_s)));
        page.encoded = { strip, strip, strip, strip.chopped(30) };
        QVERIFY(!SinglePage(page).saves(u"c.jpg"_s));
    }

    // Copied codes with what is none of them, which joined streams must not have or a user wanted
    // gone; coefficients that baseline coding has no symbols for; tables that divide by 0.
    void copiesNothingButCodes_data()
    {
        // Strips, hexadecimal bytes before the end of each, orientation, what else is unusual or
        // the codes of two blocks; whether they are taken over, whether as codes. The codes:
        // corners of 1000 and 2000, of -1000 and -2000; 64 zeros; corners of 511 and 1022, and a
        // marker in place of an escaped byte.
        addTextRows(R"(
4 |                  | 1 |            | copied
1 |                  | 1 |            | copied
4 |                  | 3 |            | coded
4 | FFFE0008736563726574 | 1 |        | coded
1 | FFFE0008736563726574 | 1 |        | coded
1 | FFED0008736563726574 | 1 |        | coded
4 | FFC400130100000000000000000000000000000000 | 1 | | coded
4 | FFD0                 | 1 |        | coded
4 | FF01                 | 1 |        | coded
4 | FFFFFF               | 1 |        | coded
1 | FFFFFF               | 1 |        | coded
4 | 5555                 | 1 |        | coded
1 | 5555                 | 1 |        | coded
4 | 00                   | 1 |        | coded
1 |                      | 1 | restarts   | coded
4 |                      | 1 | restarts   | coded
1 |                      | 1 | arithmetic | coded
4 |                      | 1 | arithmetic | coded
4 |                      | 1 | step       | decoded
1 |                      | 1 | cut        | refused
4 |                      | 1 | cut        | refused
1 |                      | 1 | unmarked   | refused
1 |                      | 1 | spectral   | decoded
4 |                      | 1 | later      | decoded
4 |                      | 1 | others     | coded
4 | 5555                 | 1 | first      | coded
4 | FFFE0008736563726574 | 1 | first      | coded
1 |                      | 1 | =FF007D0AFF007D0A               | decoded
1 |                      | 2 | =FF007D0AFF007D0A               | decoded
1 |                      | 1 | =FE05EBF817AF                   | decoded
1 |                      | 1 | =3FCFF9FF003FE4FF003FE7FCFF009F | coded
1 |                      | 1 | =FDFF00AFDFFA                   | copied
1 |                      | 1 | =FDFFD0AFDFFA                   | refused
)");
    }

    void copiesNothingButCodes()
    {
        const auto [strips, tail, orientation, kind, wanted] = textRow<5>();
        const bool isGiven = kind.startsWith(u'=');
        QByteArray stream = grayStream([kind = kind, isGiven](jpeg_compress_struct& codec) {
            if (kind == u"restarts")
                codec.restart_interval = 4;
            codec.arith_code = kind == u"arithmetic";
            if (isGiven)
                codec.image_width = 16;
            if (kind == u"others")
                codec.comp_info[0].dc_tbl_no = codec.comp_info[0].ac_tbl_no = 1;
        });
        if (kind == u"step")
            stream[stream.indexOf(QByteArray("\xFF\xDB")) + 5 + 63] = '\0';
        const qsizetype scanAt = stream.indexOf(QByteArray("\xFF\xDA"));
        const qsizetype codesAt = scanAt + 10;
        // Of the first strip, where only the later ones are unusual.
        const QByteArray sound
            = kind == u"others" ? grayStream([](jpeg_compress_struct&) {}) : stream;
        if (kind == u"spectral" || kind == u"later") // it ends at coefficient 62
            stream[codesAt - 2] = 62;
        if (isGiven)
            stream = stream.left(codesAt) + QByteArray::fromHex(kind.mid(1).toLatin1() + "FFD9");
        if (kind == u"unmarked") // with restart markers that are not there
            stream.insert(scanAt, QByteArray::fromHex("FFDD00040004"));
        const QByteArray plain = stream;
        stream.insert(stream.size() - 2, QByteArray::fromHex(tail.toLatin1()));
        if (kind == u"cut")
            stream.chop(2);
        TestPage page("compression=7 width=64 rows=8");
        page.width = isGiven ? 16 : 64;
        page.height = 8 * strips.toInt();
        page.orientation = orientation.toInt();
        page.encoded = QList<QByteArray>(strips.toInt(), kind == u"first" ? plain : stream);
        page.encoded.first() = kind == u"later" || kind == u"others" ? sound : stream;
        page.moreTags = [](TIFF* to) { TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0); };
        SinglePage single(page);
        QCOMPARE(hasCodes(single) && page.orientation == 1, wanted == u"copied");
        if (wanted == u"refused") {
            QVERIFY(!single.saves(u"a.jpg"_s));
            return;
        }
        const bool isTaken = isTakenOver(single, u"a.jpg"_s);
        QCOMPARE(isTaken, wanted != u"decoded");
        isTakenOver(single, u"b.jpg"_s, { .reencodes = true });
        const QByteArray found = bytesOf(single.path(u"a.jpg"_s));
        QVERIFY(!found.contains("secret"));
        QVERIFY(wanted != u"copied" || page.height > 8 || found.endsWith(plain.mid(codesAt)));
        if (isTaken)
            QCOMPARE(streamOf(found).warnings, 0);
        const Picture picture = readPicture(single.path(u"b.jpg"_s));
        QCOMPARE(difference(
                     readPicture(single.path(u"a.jpg"_s)), { page.width, page.height, 1, 8 },
                     [&](int x, int y, int c) { return double(picture.at(x, y, c)); }, 2),
                 QString());
    }

    // Data of an old-style page that are not those of the stream that its tags name.
    void takesWholeOldStyleStreamsOver_data() { addTextRows("0 | taken\n1 | decoded"); }

    void takesWholeOldStyleStreamsOver()
    {
        const auto [outside, wanted] = textRow<2>();
        const QByteArray stream = grayStream([](jpeg_compress_struct&) {});
        const auto bytes = static_cast<std::uint32_t>(stream.size());
        SinglePage single { TestPage() };
        const QString path = single.path(u"old.tif"_s);
        putBytes(path,
                 rawTiff({},
                         { { 256, 64 },
                           { 257, 8 },
                           { 258, 8 },
                           { 259, 6 },
                           { 262, 1 },
                           { 273, 8 },
                           { 277, 1 },
                           { 278, 8 },
                           { 279, bytes + outside.toUInt() },
                           { 513, 8 },
                           { 514, bytes } },
                         { -1 }, stream + QByteArray(2, '\0')));
        PageImage image(TiffDocument(path).page(0));
        QCOMPARE(isTakenOver(image, single.path(u"a.jpg"_s)), wanted == u"taken");
        QVERIFY(wanted != u"taken"
                || streamOf(bytesOf(single.path(u"a.jpg"_s))).planes == streamOf(stream).planes);
    }

    // A half-written file of a page that can be written well.
    void encodesAnewWhatReadsBackWrongly()
    {
        SinglePage single { TestPage("jpeg smooth") };
        PageEncoding encoding = pageEncoding(single.path(u"a.jpg"_s));
        encoding.encodeBlocks = encodeWithTail;
        const auto source = single.image().sharedSource();
        encodedPage(source, single.path(u"a.jpg"_s), encoding, { .verifies = true })
            ->commit(StagedFile::Existing::Replaced);
        QVERIFY(!single.image().takeDiagnostics().isTakenOver);
        isTakenOver(single, u"b.jpg"_s, { .reencodes = true });
        QCOMPARE(bytesOf(single.path(u"a.jpg"_s)), bytesOf(single.path(u"b.jpg"_s)));
    }

    // Rows that are missing, filled up with the last one.
    void refusesToFillUpGrayPages()
    {
        const QTemporaryDir folder;
        UprightPage page;
        page.properties.widthPx = 64;
        page.properties.heightPx = 8;
        page.rows = std::make_unique<TornRows>();
        StagedFile file(folder.filePath(u"a.jpg"_s));
        QCOMPARE(reasonOf([&] { encodeJpeg(page, file); }), u"rows of the page are missing"_s);
    }

    // An array of all blocks: 80 MB here.
    void keepsMemorySmall()
    {
        constexpr int side = 6400;
        TestPage page("compression=7 rows=16 plain=99");
        page.width = side;
        page.height = 16;
        page.moreTags = [](TIFF* to) { TIFFSetField(to, TIFFTAG_JPEGTABLESMODE, 0); };
        QTemporaryDir folder;
        writeTiff(folder.filePath(u"s.tif"_s), { page });
        page.encoded
            = QList<QByteArray>(side / 16, readTiff(folder.filePath(u"s.tif"_s)).value(0).encoded);
        page.height = side;
        page.orientation = 6;
        SinglePage single(page);
        QVERIFY(isTakenOver(single, u"a.jpg"_s));
        checkPeakMemory(50'000);
    }
};

QTEST_GUILESS_MAIN(JpegTakeoverTest)
#include "JpegTakeoverTest.moc"
