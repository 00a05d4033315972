#include "engine/image/deflate/HuffmanDeflate.h"
#include "engine/image/deflate/MatchDeflate.h"
#include "engine/image/formats/gif/LzwCoder.h"
#include "engine/image/formats/png/PixelStream.h"
#include "engine/image/formats/png/RowFilter.h"
#include "tests/support/ImageReaders.h"
#include "tests/support/Testing.h"

#include <QFileInfo>
#include <QtEndian>

#include <gif_lib.h>
#include <zlib.h>

#include <random>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Symbols as frequent as the numbers of Fibonacci, the worst case for the length of codes.
Bytes fibonacci(std::size_t symbols)
{
    Bytes bytes;
    std::size_t last = 0;
    for (std::size_t symbol = 0, times = 1; symbol < symbols; ++symbol) {
        bytes.insert(bytes.end(), times, static_cast<std::uint8_t>(11 * symbol));
        times += std::exchange(last, times);
    }
    std::shuffle(bytes.begin(), bytes.end(), std::mt19937(1));
    return bytes;
}

/// Samples of rows, the coders of which choose differently by `content`.
Bytes made(const QByteArray& content, std::size_t count, std::size_t rowBytes = 500)
{
    const auto kind
        = QByteArrayList { "flat", "ramp", "drawn", "noise", "runs", "random" }.indexOf(content);
    std::mt19937 random(5);
    Bytes bytes(count);
    std::size_t left = 0;
    std::size_t run = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t x = i % rowBytes;
        const std::size_t y = i / rowBytes;
        if (kind == 4 && left-- == 0) {
            run = random();
            left = random() % (random() % 4 == 0 ? 1500 : 20);
        }
        bytes[i]
            = static_cast<std::uint8_t>(kind == 0       ? 1
                                            : kind == 1 ? 3 * x + 5 * y
                                            : kind == 2 ? (x / 7 + y / 5) % 3 * 100 + x * x % 11
                                            : kind == 3 ? (3 * x + 5 * y) / 4 + random() % 9
                                            : kind == 4 ? run
                                                        : random());
    }
    return bytes;
}

/// What zlib makes of a raw deflate stream; empty unless the stream ends with its last byte.
Bytes inflated(const Bytes& stream, std::size_t count)
{
    Bytes bytes(count + 1);
    z_stream codec = {};
    inflateInit2(&codec, -15);
    codec.next_in = const_cast<std::uint8_t*>(stream.data());
    codec.avail_in = static_cast<uInt>(stream.size());
    codec.next_out = bytes.data();
    codec.avail_out = static_cast<uInt>(bytes.size());
    const bool isWhole = inflate(&codec, Z_FINISH) == Z_STREAM_END && codec.avail_in == 0;
    bytes.resize(isWhole ? codec.total_out : 0);
    inflateEnd(&codec);
    return bytes;
}

/// Appends what `compress` makes of `bytes`. Ends the test program when it touches more than it
/// may.
template <typename Compress>
void append(const Compress& compress, std::size_t bound, Bytes& stream)
{
    constexpr std::uint8_t untouched = 0xA5;
    const std::size_t before = stream.size();
    stream.resize(before + bound + 64, untouched);
    const std::size_t size = compress(stream.data() + before);
    const auto end = stream.begin() + static_cast<std::ptrdiff_t>(before + bound);
    if (size > bound || std::count(end, stream.end(), untouched) != 64)
        qFatal("took more than its bound of %zu bytes", bound);
    stream.resize(before + size);
}

void appendRuns(HuffmanDeflate& runs, std::span<const std::uint8_t> bytes, bool endsStream,
                Bytes& stream)
{
    append([&](std::uint8_t* out) { return runs.compress(bytes, endsStream, out); },
           HuffmanDeflate::bound(bytes.size()), stream);
}

void appendMatches(MatchDeflate& matches, std::span<const std::uint8_t> bytes,
                   MatchDeflate::Effort effort, bool endsStream, Bytes& stream)
{
    append([&](std::uint8_t* out) { return matches.compress(bytes, effort, endsStream, out); },
           MatchDeflate::bound(bytes.size()), stream);
}

/// Noise, and parts of it again: of every length of a match, from every distance that there is,
/// and a little farther away.
Bytes repeated()
{
    std::mt19937 random(7);
    Bytes bytes(40'000);
    std::generate(bytes.begin(), bytes.end(), std::ref(random));
    for (std::size_t i = 0; i < 3000; ++i) {
        const std::size_t length = 3 + i % 300;
        const std::size_t distance = 1 + (i < 40 ? i : random() % 33'000);
        for (std::size_t k = 0; k < length; ++k)
            bytes.push_back(bytes[bytes.size() - distance]);
        bytes.push_back(static_cast<std::uint8_t>(random()));
    }
    return bytes;
}

PixelLayout layoutOf(int channels, int bits, bool isPalette = false)
{
    PixelLayout layout;
    layout.model = isPalette ? ColorModel::Palette
        : channels > 2       ? ColorModel::Rgb
                             : ColorModel::Gray;
    layout.alpha = channels % 2 == 0 ? AlphaKind::Straight : AlphaKind::None;
    layout.bitsPerSample = bits;
    return layout;
}

constexpr int pngWidth = 61;

/// What zlib makes of `bytes`.
Bytes deflated(const Bytes& bytes)
{
    uLongf size = compressBound(bytes.size());
    Bytes stream(size);
    compress2(stream.data(), &size, bytes.data(), bytes.size(), 6);
    stream.resize(size);
    return stream;
}

/// Gray rows of PNG, all of one filter.
Bytes filtered(const Bytes& rows, std::size_t kind)
{
    Bytes above(pngWidth);
    Bytes all;
    RowFilter filter(pngWidth, 1);
    for (std::size_t at = 0; at < rows.size(); at += pngWidth) {
        all.resize(all.size() + 1 + pngWidth);
        filter.apply(static_cast<RowFilter::Kind>(kind), rows.data() + at, above.data(),
                     &*all.end() - 1 - pngWidth);
        above.assign(rows.data() + at, rows.data() + at + pngWidth);
    }
    return all;
}

/// The first sample of the file that is not that of `rows`; empty when there is none. 16 bits are
/// in the order of the machine.
QString pngDifference(const QString& path, const Bytes& rows, const PixelLayout& layout)
{
    const int bits = layout.bitsPerSample;
    const auto height = static_cast<int>(std::ssize(rows) / layout.rowBytes(pngWidth));
    return difference(
        readPicture(path), { pngWidth, height, layout.channels(), bits }, [&](int x, int y, int c) {
            const std::uint8_t* row = rows.data() + y * layout.rowBytes(pngWidth);
            const int sample = x * layout.channels() + c;
            std::uint16_t wide = 0;
            if (bits == 16)
                std::memcpy(&wide, row + 2 * sample, sizeof wide);
            const int shift = 8 - bits - sample * bits % 8;
            return bits == 16 ? wide : row[sample * bits / 8] >> shift & ((1 << bits) - 1);
        });
}

/// The PNG file at `path` by the program's own coders.
void writePng(const QString& path, const PixelLayout& layout, const Bytes& rows,
              std::size_t sectionBytes = PixelStream::usualSectionBytes,
              SpareThreads* threads = nullptr)
{
    const auto rowBytes = static_cast<std::size_t>(layout.rowBytes(pngWidth));
    const auto height = static_cast<int>(rows.size() / rowBytes);
    StagedFile file(path);
    file.write(std::array<std::uint8_t, 8> { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n' });
    std::array<std::uint8_t, 13> header {};
    header[3] = pngWidth;
    qToBigEndian(static_cast<quint32>(height), header.data() + 4);
    header[8] = static_cast<std::uint8_t>(layout.bitsPerSample);
    header[9] = static_cast<std::uint8_t>((layout.alpha == AlphaKind::None ? 0 : 4)
                                          + (layout.model == ColorModel::Gray ? 0 : 2)
                                          + (layout.model == ColorModel::Palette ? 1 : 0));
    writePngChunk(file, "IHDR", header);
    if (layout.model == ColorModel::Palette)
        writePngChunk(file, "PLTE", Bytes(3U << static_cast<unsigned>(layout.bitsPerSample)));
    {
        PixelStream data(layout, pngWidth, height, file, threads, sectionBytes);
        for (std::size_t at = 0; at < rows.size(); at += rowBytes)
            data.addRow(rows.data() + at);
    }
    writePngChunk(file, "IEND", {});
    file.commit();
}

void writeGif(const Bytes& indexes, int colors, int width, bool isBilevel, const QString& path)
{
    std::vector<RgbColor> palette;
    for (int i = 0; i < colors; ++i)
        palette.push_back({ static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(3 * i), 9 });
    StagedFile file(path);
    const auto height = static_cast<int>(indexes.size()) / width;
    const auto image = startGif(file, width, height, palette, {}, isBilevel);
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* row = indexes.data() + qsizetype { y } * width;
        Bytes packed(static_cast<std::size_t>(width + 7) / 8, 0);
        for (std::size_t x = 0; x < packed.size() * 8; ++x) // ones behind the last pixel
            packed[x / 8] |= static_cast<std::uint8_t>(
                (x < static_cast<std::size_t>(width) ? row[x] : 1) << (7 - x % 8));
        image->putRow(isBilevel ? packed.data() : row);
    }
    image->finish();
    file.commit();
}

void writeGifByGiflib(Bytes indexes, int colors, int width, const QString& path)
{
    int error = 0;
    GifFileType* gif = EGifOpenFileName(QFile::encodeName(path).constData(), false, &error);
    QVERIFY(gif != nullptr);
    const auto height = static_cast<int>(indexes.size()) / width;
    ColorMapObject* map = GifMakeMapObject(std::max(2, 1 << GifBitSize(colors)), nullptr);
    EGifPutScreenDesc(gif, width, height, 8, 0, map);
    EGifPutImageDesc(gif, 0, 0, width, height, false, nullptr);
    for (int y = 0; y < height; ++y)
        EGifPutLine(gif, indexes.data() + qsizetype { y } * width, width);
    GifFreeMapObject(map);
    QCOMPARE(EGifCloseFile(gif, &error), GIF_OK);
}

} // namespace

/// The coders of PNG and GIF against zlib, libpng and giflib.
class CodecTest : public QObject
{
    Q_OBJECT

private slots:
    void deflatesWhatZlibReads_data()
    {
        QTest::addColumn<Bytes>("bytes");
        for (const char* content : { "ramp", "noise", "random", "drawn", "runs" })
            QTest::newRow(content) << made(content, 200'000);
        Bytes runs;
        for (const std::size_t length : { 2, 3, 10, 257, 258, 259, 260, 517, 3277 })
            for (std::size_t i = 0; i < 20; ++i) { // literals keep the runs apart
                runs.push_back(static_cast<std::uint8_t>(i));
                runs.resize(runs.size() + length, 77);
            }
        QTest::newRow("runs of the same length") << runs;
        for (const std::size_t count : { 0, 1, 3, 4, 65'534, 65'535, 65'536, 131'070, 300'001 })
            QTest::addRow("%zu bytes", count) << Bytes(count, 3);
        QTest::newRow("matches") << repeated();
        QTest::newRow("Fibonacci in one block") << fibonacci(21);
        QTest::newRow("Fibonacci") << fibonacci(26);
    }

    void deflatesWhatZlibReads()
    {
        QFETCH(Bytes, bytes);
        HuffmanDeflate runs;
        Bytes stream;
        appendRuns(runs, bytes, true, stream);
        QVERIFY(inflated(stream, bytes.size()) == bytes);
        using Effort = MatchDeflate::Effort;
        MatchDeflate matches;
        for (const Effort effort : { Effort::Usual, Effort::Quick }) {
            stream.clear();
            appendMatches(matches, bytes, effort, true, stream);
            QVERIFY(inflated(stream, bytes.size()) == bytes);
        }
        // Parts by several coders are one stream as well.
        for (const std::size_t partBytes : { 50'003, 7'997, 61 }) {
            stream.clear();
            for (std::size_t start = 0, part = 0; start <= bytes.size(); start += partBytes) {
                const auto piece
                    = std::span(bytes).subspan(start, std::min(partBytes, bytes.size() - start));
                const bool isLast = start + partBytes > bytes.size();
                if (++part % 2 == 0)
                    appendRuns(runs, piece, isLast, stream);
                else
                    appendMatches(matches, piece, part % 4 == 1 ? Effort::Usual : Effort::Quick,
                                  isLast, stream);
            }
            QVERIFY(inflated(stream, bytes.size()) == bytes);
        }
    }

    void writesPngThatLibpngReads()
    {
        QList<PixelLayout> layouts;
        for (const int bits : { 1, 4, 8 })
            layouts << layoutOf(1, bits, true);
        for (const int bits : { 1, 2, 4, 8, 16 })
            layouts << layoutOf(1, bits);
        for (const int channels : { 2, 3, 4 })
            layouts << layoutOf(channels, 8) << layoutOf(channels, 16);
        for (const PixelLayout& layout : layouts) {
            const auto rowBytes = static_cast<std::size_t>(layout.rowBytes(pngWidth));
            for (const char* content : { "flat", "ramp", "drawn", "noise", "random" }) {
                const Bytes rows = made(content, rowBytes * 90, rowBytes);
                for (const std::size_t sectionBytes :
                     { std::size_t { 1 }, 7 * rowBytes, PixelStream::usualSectionBytes }) {
                    writePng(m_path, layout, rows, sectionBytes);
                    QCOMPARE(pngDifference(m_path, rows, layout), QString());
                }
            }
        }
    }

    void writesSectionsByAnyNumberOfThreads()
    {
        const PixelLayout layout = layoutOf(3, 8);
        const auto rowBytes = static_cast<std::size_t>(layout.rowBytes(pngWidth));
        const Bytes rows = made("noise", 7000 * rowBytes, rowBytes);
        for (const int spare : { 1, 2, 9 }) {
            SpareThreads threads(spare);
            writePng(m_path, layout, rows, 1000 * (1 + rowBytes), &threads);
            QCOMPARE(pngDifference(m_path, rows, layout), QString());
        }
    }

    // Wrong plans, filters and codes are a larger file, not a wrong one.
    void isNearlyAsSmallAsZlibWithTheBestFilter()
    {
        const PixelLayout layout = layoutOf(1, 8);
        for (const char* content : { "flat", "ramp", "drawn", "noise", "runs", "random" }) {
            const Bytes rows = made(content, 3000 * pngWidth, pngWidth);
            writePng(m_path, layout, rows);
            std::size_t best = rows.size() * 2;
            for (const std::size_t kind : { 0, 1, 2, 3, 4 })
                best = std::min(best, deflated(filtered(rows, kind)).size());
            const auto size = static_cast<double>(QFileInfo(m_path).size());
            QVERIFY2(size < 1.1 * static_cast<double>(best) + 500, content);
        }
    }

    void writesGifInAsFewBytesAsGiflib_data()
    {
        QTest::addColumn<int>("colors");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        for (const int colors : { 2, 3, 16, 17, 256 }) {
            QTest::addRow("%d colors, random", colors) << colors << 701 << 211;
            QTest::addRow("%d colors, runs", colors) << colors << 933 << 801;
        }
        for (const int width : { 1, 8, 65 })
            QTest::addRow("%d wide, random", width) << 2 << width << 200;
        QTest::newRow("single pixel, flat") << 2 << 1 << 1;
        QTest::newRow("single pixel of many, flat") << 256 << 1 << 1;
        // Its longest strings are longer than the longest stride, and the table becomes full.
        QTest::newRow("large and flat") << 2 << 3001 << 1501;
    }

    void writesGifInAsFewBytesAsGiflib()
    {
        QFETCH(int, colors);
        QFETCH(int, width);
        QFETCH(int, height);
        const QByteArray content = QByteArray(QTest::currentDataTag()).split(' ').last();
        const auto rowBytes = static_cast<std::size_t>(width);
        Bytes indexes = made(content, rowBytes * static_cast<std::size_t>(height), rowBytes);
        for (std::uint8_t& index : indexes)
            index = static_cast<std::uint8_t>(index % colors);
        const QString reference = m_folder.filePath(u"reference.gif"_s);
        writeGifByGiflib(indexes, colors, width, reference);
        const QString path = m_folder.filePath(u"a.gif"_s);
        for (const bool isBilevel : { false, true }) {
            if (isBilevel && colors > 2)
                continue;
            writeGif(indexes, colors, width, isBilevel, path);
            const Picture picture = readPicture(path);
            QCOMPARE(picture.width, width);
            QCOMPARE(picture.height, height);
            QVERIFY(std::equal(picture.samples.begin(), picture.samples.end(), indexes.begin(),
                               indexes.end()));
            QCOMPARE(QFileInfo(path).size(), QFileInfo(reference).size());
            const std::array last { (colors - 1) & 255, 3 * (colors - 1) & 255, 9 };
            QCOMPARE(picture.palette.at(static_cast<std::size_t>(colors - 1)), last);
            QCOMPARE(picture.transparentIndex, -1);
        }
    }

private:
    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(QStringLiteral("a.png"));
};

QTEST_APPLESS_MAIN(CodecTest)
#include "CodecTest.moc"
