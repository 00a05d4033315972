#include "filelist/PathClipboard.h"

#include <QDir>
#include <QMimeData>

#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString urlsType = u"text/uri-list"_s;
    const QString textType = u"text/plain"_s;
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

    class OfferedFiles : public QMimeData
    {
    public:
        OfferedFiles(FileList::Items items, bool isTextToo)
            : m_items(std::move(items))
            , m_isTextToo(isTextToo)
        {
        }

        QStringList formats() const override
        {
            return m_isTextToo ? QStringList { urlsType, textType } : QStringList { urlsType };
        }

    protected:
        QVariant retrieveData(const QString& type, QMetaType /*preferred*/) const override
        {
            QVariantList urls;
            QStringList paths;
            if (type == urlsType)
                for (const FileList::Item& item : m_items)
                    urls.append(item->filePath());
            else if (type == textType && m_isTextToo)
                for (const FileList::Item& item : m_items)
                    paths.append(item->localFile());
            else
                return {};
            return type == urlsType ? QVariant(urls) : QVariant(paths.join(u'\n'));
        }

    private:
        const FileList::Items m_items;
        const bool m_isTextToo;
    };

} // namespace

std::unique_ptr<QMimeData> offeredFiles(const FileList::Items& items, bool isTextToo)
{
    return std::make_unique<OfferedFiles>(items, isTextToo);
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
