#include "engine/image/PageCount.h"

#include "engine/image/tiff/OpenTiffFile.h"

#include <QFile>
#include <QFileInfo>
#include <qpdf/qpdf-c.h>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // qpdf's C interface: Clang 14 does not compile its C++ headers as C++20.
    struct PdfCloser
    {
        void operator()(_qpdf_data* document) const noexcept
        {
            qpdf_get_error(document); // one that nobody asked for goes to standard error
            qpdf_cleanup(&document);
        }
    };
    using Pdf = std::unique_ptr<_qpdf_data, PdfCloser>;

    /// The opened document; null when it is damaged, no PDF file, or needs another password.
    Pdf openPdf(const QString& path, const QString& password)
    {
        if (!QFileInfo(path).isFile())
            return {}; // qpdf would wait for the writer of a named pipe
        Pdf document(qpdf_init());
        qpdf_set_suppress_warnings(document.get(), QPDF_TRUE);
        const QPDF_ERROR_CODE result = qpdf_read(
            document.get(), QFile::encodeName(path).constData(), password.toUtf8().constData());
        if ((result & QPDF_ERRORS) != 0)
            return {};
        return document;
    }

} // namespace

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
        if (QFileInfo(path).suffix().toUpper() != u"PDF"_s)
            return { 0, {}, QString::fromUtf8(error.what()) };
    }
    const Pdf document = openPdf(path, password);
    if (!document)
        return { 0, {}, u"it is no PDF document that can be opened"_s };
    return { static_cast<std::uint32_t>(std::max(0, qpdf_get_num_pages(document.get()))) };
}

bool verifyPDF(const QUrl& url, const QString& password)
{
    return url.isLocalFile() && !password.isNull() && openPdf(url.toLocalFile(), password);
}

} // namespace pagestack
