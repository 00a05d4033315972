#include "engine/image/PageCount.h"

#include "engine/image/PdfDocument.h"
#include "engine/image/tiff/TiffDirectoryChain.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    std::uint32_t countTiffImages(const QString& path)
    {
        // Without O_NONBLOCK a named pipe would wait for its writer.
        const int file
            = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (file < 0)
            return 0;
        const std::size_t pages = walkDirectoryChain(file).offsets.size();
        ::close(file);
        return static_cast<std::uint32_t>(
            std::min<std::size_t>(pages, std::numeric_limits<std::uint32_t>::max()));
    }

} // namespace

std::uint32_t getTiffPageCount(const QUrl& url, const QString& password)
{
    if (!url.isLocalFile())
        return 0;
    const QString path = url.toLocalFile();
    const std::uint32_t images = countTiffImages(path);
    if (images != 0 || QFileInfo(path).suffix().toUpper() != u"PDF"_s)
        return images;
    return countPdfPages(path, password);
}

bool verifyPDF(const QUrl& url, const QString& password)
{
    if (!url.isLocalFile() || password.isNull())
        return false;
    return opensAsPdf(url.toLocalFile(), password);
}

} // namespace pagestack
