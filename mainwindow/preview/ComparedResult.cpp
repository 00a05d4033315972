#include "mainwindow/preview/ComparedResult.h"

#include "filelist/FileItem.h"

#include <algorithm>
#include <limits>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int compareRestMs = 300;

    QString sizeOf(std::int64_t bytes)
    {
        constexpr std::int64_t most = std::numeric_limits<int>::max();
        return FileItem::sizeText(static_cast<int>(std::min(bytes, most))).trimmed();
    }

} // namespace

ComparedResult::ComparedResult(QThreadPool& threads, Options options)
    : m_options(std::move(options))
    , m_work(threads, nullptr)
    , m_rest(compareRestMs, [this] { begin(); })
{
}

void ComparedResult::setPage(std::shared_ptr<PreviewFile> file, int page, QPoint center)
{
    m_file = std::move(file);
    m_page = page;
    m_center = center;
    m_region = {};
    begin();
}

void ComparedResult::refresh()
{
    if (m_file)
        m_rest.start();
}

void ComparedResult::follow(const QRect& seen)
{
    if (m_region.isEmpty() || m_region.contains(seen.center()))
        return;
    m_center = seen.center();
    refresh();
}

void ComparedResult::stop()
{
    m_rest.stop();
    m_work.cancel();
    m_file.reset();
}

void ComparedResult::begin()
{
    m_rest.stop();
    m_work.start(
        [file = m_file, page = m_page, options = m_options(),
         center = m_center](const IsStopped& isStopped) {
            return resultSample(file->open(isStopped), page, options, center, isStopped);
        },
        [this](const std::optional<ResultSample>& result, const QString& reason) {
            if (!result) {
                emit failed(reason);
                return;
            }
            tell(*result);
        });
}

void ComparedResult::tell(const ResultSample& sample)
{
    m_region = sample.region;
    QString format = fileExtension(static_cast<int>(sample.type)).mid(1).toUpper();
    if (sample.type == OutputType::Jpeg)
        format = u"JPEG"_s;
    QStringList notes = sample.losses;
    if (sample.isEstimated)
        notes.append(
            tr("Of this large page only a part is compared, that in the middle of the view."));
    emit made(
        [sample](const PictureWish& wish, const IsStopped& isStopped) {
            return shownImage(pictureOf(sample, wish, isStopped));
        },
        (sample.isEstimated ? tr("%1, about %2") : tr("%1, %2")).arg(format, sizeOf(sample.bytes)),
        notes);
}

} // namespace pagestack
