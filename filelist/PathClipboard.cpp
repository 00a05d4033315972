#include "filelist/PathClipboard.h"

#include <QDir>
#include <QMimeData>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr qsizetype mostCharacters = 4'000'000; // the window stands still meanwhile

    QUrl fileIn(QStringView line)
    {
        for (const QChar mark : { u'"', u'\'' })
            if (line.size() > 1 && line.startsWith(mark) && line.endsWith(mark))
                line = line.sliced(1, line.size() - 2);
        if (line.startsWith(u"file:", Qt::CaseInsensitive))
            return QUrl(line.toString());
        if (line.startsWith(u"~/"))
            return QUrl::fromLocalFile(QDir::homePath() + line.sliced(1).toString());
        return line.startsWith(u'/') ? QUrl::fromLocalFile(line.toString()) : QUrl();
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

ClipboardFiles filesIn(const QMimeData* data)
{
    if (data == nullptr)
        return {};
    if (data->hasUrls()) {
        QList<QUrl> urls = data->urls();
        urls.removeIf([](const QUrl& url) { return !url.isLocalFile(); });
        return { .urls = urls };
    }
    const QString text = data->text();
    if (text.size() > mostCharacters)
        return { .isTooLong = true };
    ClipboardFiles files;
    for (const QStringView part : qTokenize(text, u'\n')) {
        const QStringView line = part.trimmed();
        if (line.isEmpty())
            continue;
        if (const QUrl url = fileIn(line); url.isLocalFile())
            files.urls.append(url);
        else
            ++files.unreadLines;
    }
    return files;
}

} // namespace pagestack
