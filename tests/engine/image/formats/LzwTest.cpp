#include "engine/image/formats/gif/GifImage.h"
#include "tests/support/ImageReaders.h"
#include "tests/support/Testing.h"

#include <QFileInfo>

#include <gif_lib.h>

#include <random>

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Indexes
{
    int colors;
    int width;
    Bytes pixels;

    int height() const { return static_cast<int>(pixels.size()) / width; }
};

Indexes indexesOf(int colors, int width, int height, const QByteArray& content)
{
    std::mt19937 random(7);
    Indexes indexes { colors, width, Bytes(static_cast<std::size_t>(width * height)) };
    unsigned color = 0;
    unsigned left = 0;
    for (std::size_t i = 0; i < indexes.pixels.size(); ++i) {
        if (content == "runs" && left-- == 0) {
            color = static_cast<unsigned>(random());
            left = static_cast<unsigned>(random()) % (random() % 4 == 0 ? 1500 : 20);
        }
        const unsigned value = content == "flat" ? 1
            : content == "runs"                  ? color
            : content == "dither"                ? (i / 100 % 2 == 0 ? static_cast<unsigned>(i) : 1)
            : content == "ramp" ? static_cast<unsigned>(i) % static_cast<unsigned>(width) / 3
                                : static_cast<unsigned>(random());
        indexes.pixels[i] = static_cast<std::uint8_t>(value % static_cast<unsigned>(colors));
    }
    return indexes;
}

std::vector<RgbColor> paletteOf(int colors)
{
    std::vector<RgbColor> palette;
    for (int i = 0; i < colors; ++i)
        palette.push_back({ static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(3 * i), 9 });
    return palette;
}

void write(const Indexes& indexes, const QString& path, GifImage::Rows rows)
{
    StagedFile file(path);
    GifImage image(file, indexes.width, indexes.height(), paletteOf(indexes.colors), {}, rows);
    for (int y = 0; y < indexes.height(); ++y) {
        const std::uint8_t* row = indexes.pixels.data() + qsizetype { y } * indexes.width;
        Bytes packed(static_cast<std::size_t>(indexes.width + 7) / 8, 0);
        for (std::size_t x = 0; x < static_cast<std::size_t>(indexes.width); ++x)
            packed[x / 8] = static_cast<std::uint8_t>(packed[x / 8] | row[x] << (7 - x % 8));
        const int unused = static_cast<int>(packed.size()) * 8 - indexes.width;
        packed.back() = static_cast<std::uint8_t>(packed.back() | ((1 << unused) - 1));
        image.putRow(rows == GifImage::Rows::Bits ? packed.data() : row);
    }
    image.finish();
    file.commit();
}

void writeByGiflib(Indexes indexes, const QString& path)
{
    int error = 0;
    GifFileType* gif = EGifOpenFileName(QFile::encodeName(path).constData(), false, &error);
    QVERIFY(gif != nullptr);
    int colors = 2;
    while (colors < indexes.colors)
        colors *= 2;
    ColorMapObject* map = GifMakeMapObject(colors, nullptr);
    EGifPutScreenDesc(gif, indexes.width, indexes.height(), 8, 0, map);
    EGifPutImageDesc(gif, 0, 0, indexes.width, indexes.height(), false, nullptr);
    for (int y = 0; y < indexes.height(); ++y)
        EGifPutLine(gif, indexes.pixels.data() + qsizetype { y } * indexes.width, indexes.width);
    GifFreeMapObject(map);
    QCOMPARE(EGifCloseFile(gif, &error), GIF_OK);
}

} // namespace

class LzwTest : public QObject
{
    Q_OBJECT

private slots:
    void keepsEveryIndexInAsFewBytesAsGiflib_data()
    {
        QTest::addColumn<int>("colors");
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        for (const int colors : { 2, 3, 4, 16, 17, 256 }) {
            QTest::addRow("%d colors, random", colors) << colors << 701 << 211;
            QTest::addRow("%d colors, runs", colors) << colors << 1733 << 1201;
            QTest::addRow("%d colors, ramp", colors) << colors << 523 << 90;
        }
        for (const int width : { 1, 3, 4, 8, 57, 64, 65 })
            for (const char* content : { "random", "flat" })
                QTest::addRow("%d wide, %s", width, content) << 2 << width << 200;
        QTest::newRow("2 colors by turns and flat, dither") << 2 << 523 << 90;
        QTest::newRow("single pixel, flat") << 2 << 1 << 1;
        QTest::newRow("single pixel of many, flat") << 256 << 1 << 1;
        // Its longest strings are longer than the longest stride, and the table becomes full.
        QTest::newRow("large and flat") << 2 << 3001 << 3001;
    }

    void keepsEveryIndexInAsFewBytesAsGiflib()
    {
        QFETCH(int, colors);
        QFETCH(int, width);
        QFETCH(int, height);
        const QByteArray content = QByteArray(QTest::currentDataTag()).split(' ').last();
        const Indexes indexes = indexesOf(colors, width, height, content);
        const QTemporaryDir folder;
        const QString reference = folder.filePath(u"reference.gif"_s);
        writeByGiflib(indexes, reference);
        for (const GifImage::Rows rows : { GifImage::Rows::Bytes, GifImage::Rows::Bits }) {
            if (rows == GifImage::Rows::Bits && colors > 2)
                continue;
            const QString path = folder.filePath(u"a.gif"_s);
            write(indexes, path, rows);
            const Picture picture = readPicture(path);
            QCOMPARE(picture.width, width);
            QCOMPARE(picture.height, height);
            QVERIFY(std::equal(picture.samples.begin(), picture.samples.end(),
                               indexes.pixels.begin(), indexes.pixels.end()));
            QCOMPARE(QFileInfo(path).size(), QFileInfo(reference).size());
        }
    }

    void writesTheColorTable()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a.gif"_s);
        for (const auto& [colors, entries] :
             { std::pair(1, 2), std::pair(5, 8), std::pair(256, 256) }) {
            write(indexesOf(colors, 40, 9, "ramp"), path, GifImage::Rows::Bytes);
            const Picture picture = readPicture(path);
            QCOMPARE(picture.palette.size(), static_cast<std::size_t>(entries));
            const std::array last { (colors - 1) & 255, 3 * (colors - 1) & 255, 9 };
            QCOMPARE(picture.palette.at(static_cast<std::size_t>(colors - 1)), last);
            QCOMPARE(picture.transparentIndex, -1);
        }
    }
};

QTEST_GUILESS_MAIN(LzwTest)
#include "LzwTest.moc"
