#include "engine/image/PdfDocument.h"

#include <QFile>
#include <QFileInfo>
#include <qpdf/qpdf-c.h>

#include <algorithm>
#include <memory>

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

} // namespace

std::optional<std::uint32_t> pdfPageCount(const QString& path, const QString& password)
{
    if (!QFileInfo(path).isFile())
        return {}; // qpdf would wait for the writer of a named pipe
    const std::unique_ptr<_qpdf_data, PdfCloser> document(qpdf_init());
    qpdf_set_suppress_warnings(document.get(), QPDF_TRUE);
    const QPDF_ERROR_CODE result = qpdf_read(document.get(), QFile::encodeName(path).constData(),
                                             password.toUtf8().constData());
    if ((result & QPDF_ERRORS) != 0)
        return {};
    return static_cast<std::uint32_t>(std::max(0, qpdf_get_num_pages(document.get())));
}

QString pdfLibrary() { return u"qpdf "_s + QString::fromLatin1(qpdf_get_qpdf_version()); }

} // namespace pagestack
