#include "filelist/FileLoader.h"

#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "filelist/AllowedFileTypes.h"
#include "filelist/FileItemQueue.h"
#include "filelist/FolderEntries.h"

#include <QElapsedTimer>
#include <QFileInfo>

#include <exception>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    using Items = QList<std::shared_ptr<FileItem>>;

    // The main thread draws the list anew after each call, which takes longer than adding a hundred
    // files: so calls are made for many files where files come fast. Where they come slowly, time
    // decides, and each is shown when it is ready.
    constexpr qsizetype mostPending = 2048;
    constexpr qsizetype mostFoundAtATime = 512;
    constexpr qint64 longestSearchMs = 10;
    constexpr qint64 longestCallMs = 8;

    /// Where the files of a load come from.
    class FileSource
    {
    public:
        virtual ~FileSource() = default;
        /// Looks at the next entry and adds it to `found` if it is wanted. False at the end.
        virtual bool step(QList<QUrl>& found) = 0;
    };

    /// `url` without "." and "..", by which one file would have two URLs. One that says more than a
    /// path, or whose path is no text, stays as it is.
    QUrl plainUrl(const QUrl& url)
    {
        if (!url.isLocalFile() || !url.host().isEmpty() || !FileItem::hasTextPath(url))
            return url;
        const QString path = url.toLocalFile();
        const QString plain = absolutePath(path);
        return plain == path ? url : QUrl::fromLocalFile(plain);
    }

    class FilesAsGiven : public FileSource
    {
    public:
        explicit FilesAsGiven(const QList<QUrl>& urls)
            : m_urls(urls)
        {
        }

        bool step(QList<QUrl>& found) override
        {
            if (m_next == m_urls.size())
                return false;
            found.append(plainUrl(m_urls.at(m_next++)));
            return true;
        }

    private:
        QList<QUrl> m_urls;
        qsizetype m_next = 0;
    };

    bool hasAllowedType(const QString& name)
    {
        const qsizetype dot = name.lastIndexOf(u'.');
        return dot > name.lastIndexOf(u'/') + 1
            && isAllowedFileType(QStringView(name).sliced(dot + 1));
    }

    class FilesInFolders : public FileSource
    {
    public:
        FilesInFolders(const QList<QUrl>& urls, bool includeSubdirectories)
            : m_urls(urls)
            , m_includeSubdirectories(includeSubdirectories)
        {
        }

        bool step(QList<QUrl>& found) override
        {
            if (m_entries) {
                stepInFolder(found);
                return true;
            }
            if (m_next == m_urls.size())
                return false;
            begin(plainUrl(m_urls.at(m_next++)), found);
            return true;
        }

    private:
        void begin(const QUrl& url, QList<QUrl>& found)
        {
            const QString path = url.toLocalFile();
            if (!QFileInfo(path).isDir() && hasAllowedType(url.path()))
                found.append(url);
            else if (!path.isEmpty())
                m_entries.emplace(path, m_includeSubdirectories);
        }

        void stepInFolder(QList<QUrl>& found)
        {
            const std::optional<FolderEntries::Entry> entry = m_entries->next();
            if (!entry)
                m_entries.reset();
            else if (!entry->isDirectory && hasAllowedType(entry->path))
                found.append(QUrl::fromLocalFile(entry->path));
        }

        QList<QUrl> m_urls;
        bool m_includeSubdirectories;
        qsizetype m_next = 0;
        std::optional<FolderEntries> m_entries; ///< of the folder in hand
    };

    /// One call of addFilesToList or addFolderToList.
    class Load
    {
    public:
        Load(LoaderTarget& target, FileSource& source)
            : m_target(target)
            , m_source(source)
            , m_ahead([&target] { return target.isProcessing(); })
        {
        }

        void run();
        bool hasAdded() const { return m_hasAdded; }

    private:
        bool isWanted() const { return !m_isShutDown && m_target.isProcessing(); }
        QList<QUrl> findMore();
        Items itemsToDeliver(bool hasFoundMore);
        void deliver(const Items& items, QList<QUrl>& found);
        void addSome(const Items& items, qsizetype& next);

        LoaderTarget& m_target;
        FileSource& m_source;
        FileItemQueue m_ahead;
        bool m_isAtEnd = false; ///< of the source
        bool m_isShutDown = false;
        bool m_hasAdded = false;
    };

    void Load::run()
    {
        while (isWanted() && !(m_isAtEnd && m_ahead.pending() == 0)) {
            QList<QUrl> found = findMore();
            deliver(itemsToDeliver(!found.isEmpty()), found);
            m_ahead.add(found);
        }
    }

    QList<QUrl> Load::findMore()
    {
        QList<QUrl> found;
        if (m_ahead.pending() >= mostPending)
            return found;
        QElapsedTimer elapsed;
        elapsed.start();
        while (!m_isAtEnd && found.size() < mostFoundAtATime && elapsed.elapsed() < longestSearchMs
               && m_target.isProcessing())
            m_isAtEnd = !m_source.step(found);
        return found;
    }

    // Waits only where there is nothing else to do.
    Items Load::itemsToDeliver(bool hasFoundMore)
    {
        const qsizetype pending = m_ahead.pending();
        const bool mustWait = pending >= mostPending || (m_isAtEnd && !hasFoundMore && pending > 0);
        return mustWait ? m_ahead.waitForReady() : m_ahead.takeReady();
    }

    // Files that the list has already are taken out of `found` on the way.
    void Load::deliver(const Items& items, QList<QUrl>& found)
    {
        qsizetype next = 0;
        bool isFirst = true;
        while (isWanted() && (next < items.size() || (isFirst && !found.isEmpty()))) {
            m_isShutDown = true; // unless the call is made
            callOnMainThread([&] {
                m_isShutDown = false;
                addSome(items, next);
                if (std::exchange(isFirst, false))
                    found.removeIf([this](const QUrl& url) { return m_target.contains(url); });
            });
        }
    }

    void Load::addSome(const Items& items, qsizetype& next)
    {
        QElapsedTimer elapsed;
        elapsed.start();
        while (next < items.size() && elapsed.elapsed() < longestCallMs) {
            if (!m_target.isProcessing())
                return;
            const std::shared_ptr<FileItem>& item = items.at(next++);
            if (!item || !m_target.append(item))
                continue;
            m_hasAdded = true;
            m_target.updateTotalPagesLabel();
        }
    }

    bool load(LoaderTarget& target, FileSource& source, const QString& name)
    {
        bool hasAdded = false;
        try {
            Load load(target, source);
            try {
                load.run();
            } catch (...) {
                hasAdded = load.hasAdded();
                throw;
            }
            hasAdded = load.hasAdded();
        } catch (const std::exception& error) {
            systemLogError(name + u':', error);
        }
        return hasAdded;
    }

} // namespace

bool FileLoader::addFilesToList(const QList<QUrl>& urls)
{
    FilesAsGiven source(urls);
    return load(m_target, source, u"addFilesToList"_s);
}

bool FileLoader::addFolderToList(const QList<QUrl>& urls, bool includeSubdirectories)
{
    FilesInFolders source(urls, includeSubdirectories);
    return load(m_target, source, u"addFolderToList"_s);
}

} // namespace pagestack
