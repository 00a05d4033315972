#include "tests/fuzz/FuzzSupport.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QTemporaryDir& folder()
    {
        static const QTemporaryDir made; // making one for every input would take most of the time
        return made;
    }

    void empty()
    {
        const QDir all(folder().path());
        for (const QString& name : all.entryList(QDir::Files | QDir::Hidden | QDir::System))
            QFile::remove(all.filePath(name));
    }

    void addRow(QCryptographicHash& hash, const std::uint8_t* row, const PixelLayout& layout,
                int widthPx)
    {
        const qsizetype bits = qsizetype { widthPx } * layout.channels() * layout.bitsPerSample;
        hash.addData(QByteArrayView(row, bits / 8));
        if (const auto rest = static_cast<unsigned>(bits % 8); rest != 0) {
            const auto last = static_cast<char>(row[bits / 8] & (0xFF00U >> rest));
            hash.addData(QByteArrayView(&last, 1));
        }
    }

} // namespace

FuzzFolder::FuzzFolder() { empty(); }

FuzzFolder::~FuzzFolder() { empty(); }

QString FuzzFolder::path(const QString& name) const { return folder().filePath(name); }

QString FuzzFolder::put(const QString& name, FuzzInput bytes) const
{
    QFile file(path(name));
    const auto size = static_cast<qint64>(bytes.size());
    if (!file.open(QIODevice::WriteOnly)
        || file.write(reinterpret_cast<const char*>(bytes.data()), size) != size)
        throw BrokenPromise("the folder for fuzz inputs cannot be written to");
    return file.fileName();
}

QStringList FuzzFolder::names() const
{
    return QDir(folder().path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

std::optional<QByteArray> appearance(const PageImage& page)
try {
    const std::unique_ptr<RowSource> rows = page.source().rows();
    const PixelLayout& layout = rows->layout();
    QCryptographicHash hash(QCryptographicHash::Sha1);
    int seen = 0;
    for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand()) {
        require(band.strideBytes >= layout.rowBytes(rows->widthPx()), "rows do not overlap");
        for (int i = 0; i < band.rows; ++i)
            addRow(hash, band.row(i), layout, rows->widthPx());
        seen += band.rows;
    }
    require(seen == rows->heightPx(), "the bands hold exactly the rows of the page");
    require(rows->nextBand().rows == 0, "nothing comes after the last band");
    QByteArray shape;
    for (const int part : { rows->widthPx(), seen, static_cast<int>(layout.model),
                            layout.bitsPerSample, static_cast<int>(layout.alpha) })
        shape += QByteArray::number(part) + ' ';
    for (const RgbColor& color : layout.palette)
        shape.append(reinterpret_cast<const char*>(color.data()), std::ssize(color));
    return shape + hash.result();
} catch (const std::runtime_error&) {
    return std::nullopt;
}

bool isSmall(const PageImage& page, std::uint64_t limitBytes)
try {
    const auto pixels
        = static_cast<std::uint64_t>(page.widthPx()) * static_cast<std::uint64_t>(page.heightPx());
    return page.source().decodedBytes() <= limitBytes && pixels <= limitBytes;
} catch (const std::runtime_error&) {
    return false;
}

} // namespace pagestack
