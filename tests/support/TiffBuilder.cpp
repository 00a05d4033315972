#include "tests/support/TiffBuilder.h"

#include <QtEndian>

#include <tiffio.h>

#include <algorithm>
#include <cstring>

namespace pagestack {

namespace {

    void check(bool ok, const char* what)
    {
        if (!ok)
            qFatal("a test file cannot be made: %s", what);
    }

    struct Field
    {
        const char* name;
        int TestPage::*member;
        ttag_t tag;
    };
    constexpr Field fields[] = {
        { "width", &TestPage::width, TIFFTAG_IMAGEWIDTH },
        { "height", &TestPage::height, TIFFTAG_IMAGELENGTH },
        { "bits", &TestPage::bits, TIFFTAG_BITSPERSAMPLE },
        { "samples", &TestPage::samples, TIFFTAG_SAMPLESPERPIXEL },
        { "photometric", &TestPage::photometric, TIFFTAG_PHOTOMETRIC },
        { "compression", &TestPage::compression, TIFFTAG_COMPRESSION },
        { "planes", &TestPage::planes, TIFFTAG_PLANARCONFIG },
        { "format", &TestPage::format, TIFFTAG_SAMPLEFORMAT },
        { "predictor", &TestPage::predictor, TIFFTAG_PREDICTOR },
        { "fillOrder", &TestPage::fillOrder, TIFFTAG_FILLORDER },
        { "orientation", &TestPage::orientation, TIFFTAG_ORIENTATION },
        { "unit", &TestPage::unit, TIFFTAG_RESOLUTIONUNIT },
        { "tileWidth", &TestPage::tileWidth, TIFFTAG_TILEWIDTH },
        { "tileHeight", &TestPage::tileHeight, TIFFTAG_TILELENGTH },
        { "rows", &TestPage::rows, TIFFTAG_ROWSPERSTRIP },
    };

    void setTags(TIFF* to, const TestPage& page)
    {
        for (const Field& field : fields) {
            const int value = page.*field.member;
            const bool isThere
                = field.tag == TIFFTAG_ROWSPERSTRIP ? page.tileWidth == 0 : value != 0;
            if (isThere || field.tag == TIFFTAG_PHOTOMETRIC)
                check(TIFFSetField(to, field.tag, value) == 1, field.name);
        }
        if (page.xResolution > 0) {
            TIFFSetField(to, TIFFTAG_XRESOLUTION, page.xResolution);
            TIFFSetField(to, TIFFTAG_YRESOLUTION, page.yResolution);
        }
        if (!page.extra.empty())
            TIFFSetField(to, TIFFTAG_EXTRASAMPLES, static_cast<int>(page.extra.size()),
                         page.extra.data());
        if (!page.iccProfile.isEmpty())
            TIFFSetField(to, TIFFTAG_ICCPROFILE, static_cast<unsigned>(page.iccProfile.size()),
                         page.iccProfile.constData());
        if (const std::size_t entries = page.colorMap.size() / 3; entries > 0)
            TIFFSetField(to, TIFFTAG_COLORMAP, page.colorMap.data(), page.colorMap.data() + entries,
                         page.colorMap.data() + 2 * entries);
        if (page.moreTags)
            page.moreTags(to);
    }

    /// Adds the `bits` low bits of `value` at bit `position` of `to`, where zeros are.
    void putBits(std::vector<std::uint8_t>& to, std::size_t position, std::uint64_t value, int bits)
    {
        if (bits % 8 == 0 && bits > 8) // the machine's order, which libtiff turns to the file's
            std::memcpy(&to.at(position / 8), &value, static_cast<std::size_t>(bits / 8));
        else
            for (int i = bits - 1; i >= 0; --i, ++position)
                if ((value >> static_cast<unsigned>(i) & 1U) != 0)
                    to.at(position / 8)
                        = static_cast<std::uint8_t>(to.at(position / 8) | 0x80U >> position % 8);
    }

    /// The samples of columns `left` on and rows `first` on of a plane, as they are to be encoded.
    std::vector<std::uint8_t> block(const TestPage& page, int left, int first, int width, int rows,
                                    int plane)
    {
        const int channels = page.planes == 2 ? 1 : page.samples;
        const auto rowBytes = static_cast<std::size_t>((width * channels * page.bits + 7) / 8);
        std::vector<std::uint8_t> bytes(rowBytes * static_cast<std::size_t>(rows));
        for (int y = 0; y < rows; ++y)
            for (int i = 0; i < width * channels; ++i)
                putBits(bytes,
                        rowBytes * 8 * static_cast<std::size_t>(y)
                            + static_cast<std::size_t>(i * page.bits),
                        page.at(std::min(left + i / channels, page.width - 1),
                                std::min(first + y, page.height - 1),
                                page.planes == 2 ? plane : i % channels),
                        page.bits);
        return bytes;
    }

    void writePixels(TIFF* to, const TestPage& page)
    {
        const bool isTiled = page.tileWidth > 0;
        std::uint32_t piece = 0;
        for (QByteArray bytes : page.encoded)
            check((isTiled ? TIFFWriteRawTile : TIFFWriteRawStrip)(to, piece++, bytes.data(),
                                                                   bytes.size())
                      == bytes.size(),
                  "encoded pixels");
        if (!page.encoded.isEmpty())
            return;
        const int width = isTiled ? page.tileWidth : page.width;
        const int height = isTiled ? page.tileHeight : page.rows;
        for (int plane = 0; plane < (page.planes == 2 ? page.samples : 1); ++plane)
            for (int y = 0; y < page.height; y += height)
                for (int x = 0; x < page.width; x += width) {
                    const int rows = isTiled ? height : std::min(height, page.height - y);
                    auto bytes = block(page, x, y, width, rows, plane);
                    const auto size = static_cast<tmsize_t>(bytes.size());
                    check((isTiled ? TIFFWriteEncodedTile
                                   : TIFFWriteEncodedStrip)(to, piece++, bytes.data(), size)
                              == size,
                          "pixels");
                }
    }

} // namespace

TestPage::TestPage(const char* text)
{
    const QByteArray words = QByteArray(text)
                                 .replace("rgb", "samples=3 photometric=2")
                                 .replace("jpeg", "samples=3 photometric=6 compression=7 rows=16")
                                 .replace("fax", "bits=1 photometric=0 compression=4");
    for (const QByteArray& word : words.split(' ')) {
        const QByteArray name = word.split('=')[0];
        const QList<QByteArray> values = word.mid(name.size() + 1).split(',');
        const auto field = std::find_if(std::begin(fields), std::end(fields),
                                        [&](const Field& known) { return name == known.name; });
        if (field != std::end(fields)) {
            this->*field->member = values[0].toInt();
        } else if (name == "extra") {
            for (const QByteArray& value : values)
                extra.push_back(static_cast<std::uint16_t>(value.toInt()));
        } else if (name == "xy") {
            xResolution = values[0].toDouble();
            yResolution = values[1].toDouble();
        } else if (name == "plain") {
            sample = [values](int, int, int c) { return values[c].toULongLong(); };
        } else if (name == "smooth") {
            sample = [](int x, int y, int c) {
                return std::array { 5 * x, 240 - 7 * y, 2 * x + 3 * y, 5 * x + y / 2 }.at(c);
            };
        } else {
            check(word.isEmpty(), word.constData());
        }
    }
    if (compression == 7 && photometric == 6)
        moreTags = [](TIFF* to) { TIFFSetField(to, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB); };
}

std::uint64_t TestPage::at(int column, int row, int c) const
{
    if (sample)
        return sample(column, row, c);
    if (bits < 8)
        return static_cast<std::uint64_t>((3 * column + 5 * row + 2 * c) % 7) * (top() + 1) / 7;
    if (format == 3) { // floating point from below 0 to above 1
        const float value = static_cast<float>(4 * column + 2 * row + c) / 100.0F - 0.1F;
        std::uint32_t raw = 0;
        std::memcpy(&raw, &value, sizeof raw);
        return raw;
    }
    return static_cast<std::uint64_t>(261 * column + 1037 * row + 4139 * c)
        * (bits > 16 ? 65537U : 1U)
        & top();
}

void writeTiff(const QString& path, const QList<TestPage>& pages, const char* mode)
{
    TIFF* to = TIFFOpen(QFile::encodeName(path).constData(), mode);
    check(to != nullptr, "file");
    for (const TestPage& page : pages) {
        setTags(to, page);
        writePixels(to, page);
        check(TIFFWriteDirectory(to) == 1, "directory");
    }
    TIFFClose(to);
}

QByteArray rawTiff(TiffKind kind, const QList<TiffEntry>& entries, const QList<int>& next,
                   const QByteArray& data)
{
    QByteArray bytes(kind.isBigEndian ? "MM" : "II");
    const auto put = [&](std::uint64_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes.append(static_cast<char>(value >> (8 * (kind.isBigEndian ? size - 1 - i : i))));
    };
    const int wide = kind.isBigTiff ? 8 : 4;
    const auto putOffset = [&](qsizetype directory) {
        const qsizetype size = (kind.isBigTiff ? 8 : 2) + entries.size() * (4 + 2 * wide) + wide;
        const qsizetype first = (kind.isBigTiff ? 16 : 8) + data.size();
        put(static_cast<std::uint64_t>(directory < 0 ? 0 : first + directory * size), wide);
    };
    put(kind.isBigTiff ? 43 : 42, 2);
    if (kind.isBigTiff)
        put(kind.isBigEndian ? 8U << 16U : 8U, 4);
    putOffset(0);
    bytes += data;
    for (const int following : next) {
        put(static_cast<std::uint64_t>(entries.size()), kind.isBigTiff ? 8 : 2);
        for (const TiffEntry& entry : entries) {
            put(entry.tag, 2);
            put(entry.type, 2);
            put(entry.count, wide);
            put(entry.value, 4);
            put(0, wide - 4);
        }
        putOffset(following);
    }
    return bytes;
}

QList<int> oneAfterTheOther(int count)
{
    QList<int> next;
    for (int i = 1; i < count; ++i)
        next.append(i);
    return next << -1;
}

void patchEntry(const QString& path, unsigned tag, unsigned newTag, unsigned value)
{
    QByteArray bytes = bytesOf(path);
    const auto directory = qFromLittleEndian<quint32>(bytes.constData() + 4);
    const auto entries = qFromLittleEndian<quint16>(bytes.constData() + directory);
    for (unsigned i = 0; i < entries; ++i) {
        char* entry = bytes.data() + directory + 2 + 12 * i;
        if (qFromLittleEndian<quint16>(entry) != tag)
            continue;
        qToLittleEndian<quint16>(static_cast<quint16>(newTag), entry);
        qToLittleEndian<quint16>(4, entry + 2);
        qToLittleEndian<quint32>(1, entry + 4);
        qToLittleEndian<quint32>(value, entry + 8);
        putBytes(path, bytes);
        return;
    }
    qFatal("the test file has no such entry");
}

SinglePage::SinglePage(const TestPage& page, const char* mode)
{
    writeTiff(path(QStringLiteral("page.tif")), { page }, mode);
    m_image = std::make_unique<PageImage>(TiffDocument(path(QStringLiteral("page.tif"))).page(0));
}

Picture SinglePage::saved(const QString& name, int jpegQuality)
{
    Settings settings(nullptr);
    settings.setJpegQuality(jpegQuality);
    return m_image->save(path(name), settings) ? readPicture(path(name)) : Picture();
}

} // namespace pagestack
