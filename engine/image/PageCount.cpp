#include "engine/image/PageCount.h"

#include "engine/image/PdfDocument.h"
#include "engine/image/tiff/OpenTiffFile.h"

#include <QFileInfo>

#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

std::uint32_t getTiffPageCount(const QUrl& url, const QString& password)
{
    return countPages(url, password).count;
}

CountedPages countPages(const QUrl& url, const QString& password)
{
    if (!url.isLocalFile())
        return { 0, {}, u"it is no file of this computer"_s };
    const QString path = url.toLocalFile();
    try {
        const OpenTiffFile file(path);
        const std::vector<int>& reduced = file.chain().reduced;
        return { static_cast<std::uint32_t>(file.pageCount()),
                 QList<int>(reduced.begin(), reduced.end()), file.chainFault() };
    } catch (const std::runtime_error& error) {
        if (pdfLibrary().isEmpty() || QFileInfo(path).suffix().toUpper() != u"PDF"_s)
            return { 0, {}, QString::fromUtf8(error.what()) };
    }
    if (const auto count = pdfPageCount(path, password))
        return { *count };
    return { 0, {}, u"it is no PDF document that can be opened"_s };
}

bool verifyPDF(const QUrl& url, const QString& password)
{
    return url.isLocalFile() && !password.isNull() && pdfPageCount(url.toLocalFile(), password);
}

} // namespace pagestack
