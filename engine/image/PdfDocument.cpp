#include "engine/image/PdfDocument.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

#include <algorithm>
#include <exception>
#include <limits>

namespace pagestack {

namespace {

    /// Opens the document and hands it to `use`; false when it cannot be opened.
    template <typename Use>
    bool openPdf(const QString& path, const QString& password, Use use)
    {
        if (!QFileInfo(path).isFile())
            return false; // qpdf would wait for the writer of a named pipe
        try {
            QPDF document;
            document.setSuppressWarnings(true);
            document.processFile(QFile::encodeName(path).constData(),
                                 password.toUtf8().constData());
            use(document);
            return true;
        } catch (const std::exception&) {
            return false; // damaged, no PDF file, or another password: the callers report none of
                          // it
        }
    }

} // namespace

std::uint32_t countPdfPages(const QString& path, const QString& password)
{
    std::size_t pages = 0;
    openPdf(path, password,
            [&](QPDF& document) { pages = QPDFPageDocumentHelper(document).getAllPages().size(); });
    return static_cast<std::uint32_t>(
        std::min<std::size_t>(pages, std::numeric_limits<std::uint32_t>::max()));
}

bool opensAsPdf(const QString& path, const QString& password)
{
    return openPdf(path, password, [](QPDF&) {});
}

} // namespace pagestack
