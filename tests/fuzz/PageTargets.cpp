#include "engine/image/PageEncoding.h"
#include "engine/image/TiffDocument.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/settings/OutputCodes.h"
#include "filelist/FileItem.h"
#include "tests/fuzz/FuzzSupport.h"
#include "tests/support/ImageReaders.h"

#include <QCryptographicHash>
#include <QSize>
#include <QtEndian>

namespace pagestack {

namespace {

    constexpr int mostPagesDecoded = 8;
    constexpr int mostPagesWritten = 3;
    constexpr std::uint64_t wholePageBytes = 2 * 1024 * 1024;
    constexpr std::uint64_t writtenPageBytes = 256 * 1024;
    constexpr std::size_t choiceBytes = 3;
    const QString sourceName = u"input.pdf"_s; // so what is no TIFF file is counted as PDF

    /// A page's layout and pixels, without what fills up the last byte of a row. Nothing when it
    /// cannot be decoded.
    std::optional<QByteArray> appearance(const PageImage& page)
    try {
        const std::unique_ptr<RowSource> rows = page.source().rows();
        const PixelLayout& layout = rows->layout();
        const qsizetype bits
            = qsizetype { rows->widthPx() } * layout.channels() * layout.bitsPerSample;
        const auto unused = static_cast<unsigned>(rows->rowBytes() * 8 - bits);
        QCryptographicHash hash(QCryptographicHash::Sha1);
        int seen = 0;
        for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand()) {
            require(band.strideBytes >= rows->rowBytes(), "rows do not overlap");
            for (int i = 0; i < band.rows; ++i) {
                QByteArray row(reinterpret_cast<const char*>(band.row(i)), rows->rowBytes());
                row.back() = static_cast<char>(row.back() & (0xFFU << unused));
                hash.addData(row);
            }
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

    /// Whether `page` has at most `limitBytes` of stored samples and as many pixels. A single row
    /// may be as long as it likes: only a few rows of a page are held.
    bool isSmall(const PageImage& page, std::uint64_t limitBytes)
    try {
        const auto pixels = qint64 { page.widthPx() } * page.heightPx();
        return page.heightPx() == 1
            || (page.source().decodedBytes() <= limitBytes
                && static_cast<std::uint64_t>(pixels) <= limitBytes);
    } catch (const std::runtime_error&) {
        return false;
    }

    /// The start of a page that would take too long as a whole. What it announces must not cost
    /// more than the program's own limits allow.
    void decodeStart(const PageImage& page)
    try {
        const std::unique_ptr<RowSource> rows = page.source().rows();
        const Band band = rows->nextBand();
        require(band.rows > 0 && band.rows <= rows->heightPx(), "a page starts with a band");
    } catch (const std::runtime_error& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
    }

    enum { together = 5, inPieces = 6 }; // besides the formats of OutputType

    /// What the pages of a written TIFF file must look like; nothing for one that could not be
    /// shown before either.
    using Appearances = std::vector<std::optional<QByteArray>>;

    void checkTiff(const QString& path, const Appearances& expected)
    try {
        const TiffDocument written(path);
        require(written.chainFault().isEmpty(), "a written file has a sound chain of pages");
        require(written.pageCount() == static_cast<int>(expected.size()),
                "a written file has the pages that were given");
        for (std::size_t i = 0; i < expected.size(); ++i)
            require(!expected[i] || appearance(written.page(static_cast<int>(i))) == expected[i],
                    "a page looks the same in a written TIFF file");
    } catch (const std::runtime_error& refusal) {
        require(false, refusal.what());
    }

    /// The size of a picture; of a BMP file what its header says.
    QSize sizeOf(const QString& path)
    {
        const QByteArray bytes = bytesOf(path).leftJustified(26);
        if (bytes.startsWith("BM"))
            return { qFromLittleEndian<qint32>(bytes.constData() + 18),
                     qFromLittleEndian<qint32>(bytes.constData() + 22) };
        const Picture picture = readPicture(path);
        return { picture.width, picture.height };
    }

    void writeApart(const FuzzFolder& folder, const PageImage& page, int format,
                    const SaveOptions& options, const std::optional<QByteArray>& expected)
    {
        const QString name = u"output"_s + fileExtension(format);
        const QString path = folder.path(name);
        try {
            encodedPage(page.sharedSource(), path, pageEncoding(path), options)->commit();
        } catch (const std::runtime_error& refusal) {
            require(*refusal.what() != '\0', "a refusal has a reason");
            require(folder.names() == QStringList { sourceName }, "a refusal leaves nothing");
            return;
        }
        require(folder.names() == QStringList({ sourceName, name }), "only the output is left");
        if (format == static_cast<int>(OutputType::Tiff)) {
            checkTiff(path, { expected });
        } else {
            const PageProperties& tags = page.source().properties();
            const QSize size(tags.widthPx, tags.heightPx);
            require(sizeOf(path) == (tags.orientation >= 5 ? size.transposed() : size),
                    "a written picture is readable and has the size of the upright page");
        }
        QFile::remove(path);
    }

    void writeTogether(const FuzzFolder& folder, const TiffDocument& document,
                       const std::vector<int>& pages, const Appearances& looks, int format,
                       int compression)
    {
        const QString path = folder.path(u"output.tiff"_s);
        Appearances expected;
        try {
            MultiPageTiffWriter file(path, compression, static_cast<int>(pages.size()));
            for (std::size_t i = 0; i < pages.size(); ++i) {
                try {
                    file.append(document.page(pages[i]).sharedSource(),
                                format != inPieces
                                    ? EncodedPieces {}
                                    : encodePieces(document.clone()->page(pages[i]).source(),
                                                   tiffCompressionTag(compression)));
                    expected.push_back(looks[i]);
                } catch (const std::runtime_error&) {
                    continue; // the others still go into the file
                }
            }
            require(file.pageCount() == static_cast<int>(expected.size()), "pages are counted");
            file.finish()->commit();
        } catch (const std::runtime_error& refusal) {
            require(expected.empty(), refusal.what());
            require(folder.names() == QStringList { sourceName }, "a refusal leaves nothing");
            return;
        }
        require(folder.names() == QStringList({ sourceName, u"output.tiff"_s }),
                "only the output is left");
        checkTiff(path, expected);
    }

} // namespace

void readPages(FuzzInput input)
{
    const FuzzFolder folder;
    const QString path = folder.put(sourceName, input);
    const std::shared_ptr<FileItem> item = FileItem::initWithURL(QUrl::fromLocalFile(path));
    require(item && item->pages() >= 0, "a file has no negative number of pages");
    try {
        const TiffDocument document(path);
        require(document.pageCount() == item->pages(), "the list counts the pages that are read");
        const std::unique_ptr<TiffDocument> clone = document.clone();
        require(clone->pageCount() == document.pageCount(), "a clone has the same pages");
        for (int index = 0; index < std::min(document.pageCount(), mostPagesDecoded); ++index) {
            const PageImage page = document.page(index);
            if (!isSmall(page, wholePageBytes))
                decodeStart(page);
            else
                require(appearance(page) == appearance(clone->page(index)),
                        "every pass over a page gives the same pixels");
        }
    } catch (const std::runtime_error& refusal) {
        require(*refusal.what() != '\0', "a refusal has a reason");
    }
}

void writePages(FuzzInput input)
{
    if (input.size() < choiceBytes)
        return;
    const int format = input[0] % 7;
    const unsigned change = input[0] / 7U % 4;
    const PageTreatment treatment { .convertsToSrgb = change % 2 == 1,
                                    .bilevel = change == 2 ? Bilevel::Dither
                                        : change == 3      ? Bilevel::Otsu
                                                           : Bilevel::None };
    const SaveOptions options { input[2] % 12, input[1] % 6 };
    const FuzzFolder folder;
    const QString path = folder.put(sourceName, input.subspan(choiceBytes));
    std::vector<int> pages;
    Appearances looks;
    std::unique_ptr<TiffDocument> document;
    try {
        document = std::make_unique<TiffDocument>(path, treatment);
        const TiffDocument reference(path,
                                     treatment); // what is read of it is not known to `document`
        for (int index = 0; index < std::min(reference.pageCount(), mostPagesWritten); ++index) {
            const PageImage page = reference.page(index);
            if (!isSmall(page, writtenPageBytes))
                continue;
            pages.push_back(index);
            looks.push_back(appearance(page));
        }
    } catch (const std::runtime_error&) {
        return; // the other target looks at files that cannot be opened
    }
    if (format >= together)
        writeTogether(folder, *document, pages, looks, format, options.tiffCompressionIndex);
    else
        for (std::size_t i = 0; i < pages.size(); ++i)
            writeApart(folder, document->page(pages[i]), format, options, looks[i]);
}

} // namespace pagestack
