#include "engine/image/formats/png/PixelStream.h"

#include "tests/support/ImageReaders.h"
#include "tests/support/Testing.h"

#include <zlib.h>

#include <random>

namespace {

constexpr int width = 61;
constexpr int usualHeight = 90;

using Bytes = std::vector<std::uint8_t>;

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

/// Rows of samples by `content`, packed as the layout says, 16 bits in the order of the machine.
Bytes rowsOf(const PixelLayout& layout, const QByteArray& content, std::size_t height = usualHeight)
{
    std::mt19937 random(5);
    const auto rowBytes = static_cast<std::size_t>(layout.rowBytes(width));
    Bytes rows(rowBytes * height);
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t i = 0; i < rowBytes; ++i) {
            const std::size_t ramp = 3 * i + 5 * y;
            rows[y * rowBytes + i] = static_cast<std::uint8_t>(
                content == "flat"        ? 0
                    : content == "ramp"  ? ramp
                    : content == "drawn" ? (i / 7 + y / 5) % 3 * 100 + i * i % 11
                    : content == "noise" ? ramp / 4 + random() % 9
                                         : random());
        }
    return rows;
}

void writeHeader(const PixelLayout& layout, int height, PngChunks& chunks)
{
    std::array<std::uint8_t, 13> header {};
    header[3] = width;
    header[6] = static_cast<std::uint8_t>(height >> 8);
    header[7] = static_cast<std::uint8_t>(height);
    header[8] = static_cast<std::uint8_t>(layout.bitsPerSample);
    header[9] = static_cast<std::uint8_t>((layout.alpha == AlphaKind::None ? 0 : 4)
                                          + (layout.model == ColorModel::Gray ? 0 : 2)
                                          + (layout.model == ColorModel::Palette ? 1 : 0));
    chunks.write({ "IHDR" }, header);
    if (layout.model == ColorModel::Palette)
        chunks.write({ "PLTE" }, Bytes(3U << static_cast<unsigned>(layout.bitsPerSample)));
}

/// The picture as libpng reads it back from what `writePixels` puts between header and end.
template <typename WritePixels>
Picture readBack(const PixelLayout& layout, int height, WritePixels writePixels)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"a.png"_s);
    StagedFile file(path);
    PngChunks chunks(file);
    writeHeader(layout, height, chunks);
    writePixels(chunks);
    chunks.write({ "IEND" }, {});
    file.commit();
    return readPicture(path);
}

/// The first sample of `picture` that is not that of `rows`; empty when there is none.
QString differenceFrom(const Bytes& rows, const PixelLayout& layout, const Picture& picture)
{
    const int bits = layout.bitsPerSample;
    const auto height
        = static_cast<int>(static_cast<qsizetype>(rows.size()) / layout.rowBytes(width));
    return difference(
        picture, { width, height, layout.channels(), bits }, [&](int x, int y, int c) {
            const std::uint8_t* row = rows.data() + y * layout.rowBytes(width);
            const int sample = x * layout.channels() + c;
            std::uint16_t wide = 0;
            if (bits == 16)
                std::memcpy(&wide, row + 2 * sample, sizeof wide);
            const int shift = 8 - bits - sample * bits % 8;
            return bits == 16 ? wide : row[sample * bits / 8] >> shift & ((1 << bits) - 1);
        });
}

} // namespace

class PixelStreamTest : public QObject
{
    Q_OBJECT

private slots:
    void isReadBack_data()
    {
        QTest::addColumn<int>("channels");
        QTest::addColumn<int>("bits");
        QTest::addColumn<bool>("isPalette");
        for (const int bits : { 1, 2, 4, 8 }) {
            QTest::addRow("gray, %d bits", bits) << 1 << bits << false;
            QTest::addRow("palette, %d bits", bits) << 1 << bits << true;
        }
        QTest::newRow("gray, 16 bits") << 1 << 16 << false;
        for (const int channels : { 2, 3, 4 })
            for (const int bits : { 8, 16 })
                QTest::addRow("%d channels, %d bits", channels, bits) << channels << bits << false;
    }

    void isReadBack()
    {
        QFETCH(int, channels);
        QFETCH(int, bits);
        QFETCH(bool, isPalette);
        const PixelLayout layout = layoutOf(channels, bits, isPalette);
        const auto rowBytes = static_cast<std::size_t>(layout.rowBytes(width));
        for (const char* content : { "flat", "ramp", "drawn", "noise", "random" })
            for (const std::size_t sectionBytes :
                 { std::size_t { 1 }, 7 * rowBytes, PixelStream::usualSectionBytes }) {
                const Bytes rows = rowsOf(layout, content);
                const Picture picture = readBack(layout, usualHeight, [&](PngChunks& chunks) {
                    PixelStream data(layout, width, usualHeight, chunks, nullptr, sectionBytes);
                    for (std::size_t y = 0; y < usualHeight; ++y)
                        data.addRow(rows.data() + y * rowBytes);
                });
                const QString difference = differenceFrom(rows, layout, picture);
                QVERIFY2(difference.isEmpty(),
                         qPrintable(QString::fromLatin1(content) + u": "_s + difference));
            }
    }

    void isReadBackWhenSectionsAreSampled()
    {
        const PixelLayout layout = layoutOf(3, 8);
        const auto rowBytes = static_cast<std::size_t>(layout.rowBytes(width));
        constexpr std::size_t partHeight = 1500;
        Bytes rows;
        for (const char* content : { "noise", "drawn", "random", "ramp", "drawn" }) {
            const Bytes part = rowsOf(layout, content, partHeight);
            rows.insert(rows.end(), part.begin(), part.end());
        }
        const std::size_t height = rows.size() / rowBytes;
        constexpr std::size_t sectionRows = 2000;
        for (const int spare : { 0, 1, 2, 9 }) {
            SpareThreads threads(1 + spare);
            ThreadClaim other = threads.take(); // until the second section begins
            const Picture picture
                = readBack(layout, static_cast<int>(height), [&](PngChunks& chunks) {
                      PixelStream data(layout, width, static_cast<int>(height), chunks, &threads,
                                       sectionRows * (1 + rowBytes));
                      for (std::size_t y = 0; y < height; ++y) {
                          if (y == sectionRows)
                              other.giveBack();
                          data.addRow(rows.data() + y * rowBytes);
                      }
                  });
            QCOMPARE(differenceFrom(rows, layout, picture), QString());
        }
    }

    void takesSpareThreadsAndGivesThemBack()
    {
        const PixelLayout layout = layoutOf(3, 8);
        constexpr int height = 4000;
        const Bytes rows = rowsOf(layout, "noise", height);
        const QTemporaryDir folder;
        StagedFile file(folder.filePath(u"a.png"_s));
        PngChunks chunks(file);
        SpareThreads threads(2);
        {
            PixelStream data(layout, width, height, chunks, &threads, rows.size() / 8);
            for (std::size_t i = 0; i < rows.size() / 2; i += rows.size() / height)
                data.addRow(rows.data() + i);
            QVERIFY(!threads.tryTake());
        }
        const ThreadClaim one = threads.tryTake();
        const ThreadClaim other = threads.tryTake();
        QVERIFY(one && other);
    }

    void filtersAsTheFormatSays()
    {
        for (const PixelLayout& layout : { layoutOf(1, 8), layoutOf(1, 16), layoutOf(3, 8),
                                           layoutOf(4, 8), layoutOf(3, 16), layoutOf(4, 16) })
            for (const char* content : { "noise", "random" }) {
                const auto rowBytes = static_cast<std::size_t>(layout.rowBytes(width));
                const Bytes rows = rowsOf(layout, content);
                Bytes filtered((1 + rowBytes) * usualHeight);
                const Bytes zeros(rowBytes);
                RowFilter filter(rowBytes, layout.channels() * layout.bitsPerSample / 8);
                for (std::size_t y = 0; y < usualHeight; ++y) {
                    const std::uint8_t* row = rows.data() + y * rowBytes;
                    const auto kind = static_cast<RowFilter::Kind>(y % 5);
                    std::uint8_t* out = filtered.data() + y * (1 + rowBytes);
                    filter.apply(kind, row, y == 0 ? zeros.data() : row - rowBytes, out);
                    QCOMPARE(std::size_t { *out }, y % 5);
                }
                const Picture picture = readBack(layout, usualHeight, [&](PngChunks& chunks) {
                    uLongf size = compressBound(filtered.size());
                    Bytes stream(size);
                    compress(stream.data(), &size, filtered.data(), filtered.size());
                    chunks.write({ "IDAT" }, std::span(stream).first(size));
                });
                Bytes expected = rows; // libpng gives the samples in the order of the file
                if (layout.bitsPerSample == 16)
                    for (std::size_t i = 0; i < expected.size(); i += 2) {
                        const int value = expected[i] << 8 | expected[i + 1];
                        const auto wide = static_cast<std::uint16_t>(value);
                        std::memcpy(&expected[i], &wide, sizeof wide);
                    }
                QCOMPARE(differenceFrom(expected, layout, picture), QString());
            }
    }

    void choosesTheFilterWithTheLeastDifferences()
    {
        std::mt19937 random(2);
        Bytes above(500);
        for (std::uint8_t& byte : above)
            byte = static_cast<std::uint8_t>(random());
        const Bytes flat(above.size(), 90);
        const auto chosen = [](const Bytes& row, const Bytes& upper) {
            RowFilter filter(row.size(), 1);
            Bytes out(1 + row.size());
            filter.applyBest(row.data(), upper.data(), out.data());
            return static_cast<RowFilter::Kind>(out[0]);
        };
        QVERIFY(chosen(Bytes(above.size()), above) == RowFilter::Kind::None);
        QVERIFY(chosen(flat, above) == RowFilter::Kind::Sub);
        QVERIFY(chosen(above, above) == RowFilter::Kind::Up);
        Bytes between = above;
        for (std::size_t i = 1; i < above.size(); ++i)
            between[i] = static_cast<std::uint8_t>((between[i - 1] + above[i]) / 2);
        // Steps above, and below them the same steps with spots: within a step the left pixel is
        // the better neighbour, at its end the upper one.
        Bytes steps(above.size());
        Bytes spotted(above.size());
        for (std::size_t i = 0; i < steps.size(); ++i) {
            steps[i] = static_cast<std::uint8_t>(above[i / 25] / 2);
            spotted[i] = static_cast<std::uint8_t>(steps[i] + (i % 25 < 5 ? 0 : 60));
        }
        QVERIFY(chosen(between, above) == RowFilter::Kind::Average);
        QVERIFY(chosen(spotted, steps) == RowFilter::Kind::Paeth);
    }

    void choosesThePlanByThePixels()
    {
        using Coding = SectionPlan::Coding;
        using Filtering = SectionPlan::Filtering;
        constexpr std::size_t rowBytes = 1000;
        constexpr std::size_t count = 400; // more than a sample
        const auto planOf = [](const std::function<int(std::size_t x, std::size_t y)>& pixel) {
            Bytes rows((1 + count) * rowBytes);
            for (std::size_t i = rowBytes; i < rows.size(); ++i)
                rows[i] = static_cast<std::uint8_t>(pixel(i % rowBytes, i / rowBytes));
            SectionCoder coder(rowBytes, 1, false, count);
            return coder.choosePlan({ rows.data() + rowBytes, count, rowBytes });
        };
        std::mt19937 random(2);
        const auto noise = [&] { return static_cast<int>(random() % 12); };
        const SectionPlan noisy
            = planOf([&](std::size_t x, std::size_t y) { return int(x + y) / 9 + noise(); });
        QVERIFY(noisy.coding == Coding::Runs);
        QVERIFY(noisy.filtering == Filtering::Best);
        const Bytes tile = [&] {
            Bytes bytes(97);
            for (std::uint8_t& byte : bytes)
                byte = static_cast<std::uint8_t>(random());
            return bytes;
        }();
        const SectionPlan tiled = planOf(
            [&](std::size_t x, std::size_t y) { return tile[(x + y / 8 * 13) % tile.size()]; });
        QVERIFY(tiled.coding == Coding::Matches);
        const SectionPlan shifted = planOf(
            [&](std::size_t x, std::size_t y) { return tile[(x * 7 + y * y) % tile.size()]; });
        QVERIFY(shifted.coding == Coding::Matches);
        QVERIFY(shifted.filtering == Filtering::None);
        const SectionPlan partlyNoisy = planOf([&](std::size_t x, std::size_t y) {
            return x < 700 ? static_cast<int>(random()) : tile[(x * 7 + y * y) % tile.size()];
        });
        QVERIFY(partlyNoisy.coding == Coding::Matches);
        // Fewer rows than a sample has bands, but more bytes.
        constexpr std::size_t wideBytes = 100'000;
        Bytes wide(4 * wideBytes);
        for (std::size_t i = wideBytes; i < wide.size(); ++i)
            wide[i] = tile[i * 7 % tile.size()];
        SectionCoder coder(wideBytes, 1, false, 3);
        QVERIFY(coder.choosePlan({ wide.data() + wideBytes, 3, wideBytes }).coding
                == Coding::Matches);
    }
};

QTEST_APPLESS_MAIN(PixelStreamTest)
#include "PixelStreamTest.moc"
