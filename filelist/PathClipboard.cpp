#include "filelist/PathClipboard.h"

#include <QDir>
#include <QMimeData>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    QUrl fileIn(QString line)
    {
        line = line.trimmed();
        for (const QChar mark : { u'"', u'\'' })
            if (line.size() > 1 && line.startsWith(mark) && line.endsWith(mark))
                line = line.sliced(1, line.size() - 2);
        if (line.startsWith(u"file:"_s, Qt::CaseInsensitive))
            return QUrl(line);
        if (line.startsWith(u"~/"_s))
            line.replace(0, 1, QDir::homePath());
        return QDir::isAbsolutePath(line) ? QUrl::fromLocalFile(line) : QUrl();
    }

} // namespace

std::unique_ptr<QMimeData> clipboardData(const QList<QUrl>& urls)
{
    QStringList paths;
    for (const QUrl& url : urls)
        paths.append(url.toLocalFile());
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    data->setText(paths.join(u'\n'));
    return data;
}

QList<QUrl> filesIn(const QMimeData* data)
{
    if (data == nullptr)
        return {};
    QList<QUrl> urls = data->urls();
    if (!data->hasUrls())
        for (const QString& line : data->text().split(u'\n'))
            urls.append(fileIn(line));
    urls.removeIf([](const QUrl& url) { return !url.isLocalFile(); });
    return urls;
}

} // namespace pagestack
