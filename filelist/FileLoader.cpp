#include "filelist/FileLoader.h"

#include "engine/sources/AllowedFileTypes.h"
#include "engine/sources/FolderWalk.h"
#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "engine/threads/StopScope.h"
#include "engine/threads/WorkQueue.h"
#include "filelist/Arguments.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QScopeGuard>
#include <QThread>

#include <algorithm>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    using Items = QList<std::shared_ptr<FileItem>>;

    // The main thread draws the list anew after each call, which takes longer than adding a hundred
    // files: so calls are made for many files where files come fast. Where they come slowly, time
    // decides, and each is shown when it is ready.
    constexpr std::size_t mostPending = 2048;
    constexpr qsizetype mostFoundAtATime = 512;
    constexpr qint64 longestSearchMs = 10;
    constexpr qint64 longestCallMs = 8;

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

    struct FoundFile
    {
        QUrl url;
        QString foundIn {}; ///< as of FileItem
        QString pageChoice { QLatin1String("") };
    };

    /// Finds the files that a load is asked for.
    class FileSearch
    {
    public:
        explicit FileSearch(Arguments request)
            : m_request(std::move(request))
        {
        }

        /// Looks at the next entry and adds it to `found` if it is wanted. False at the end.
        bool step(QList<FoundFile>& found)
        {
            if (m_walk)
                stepInFolder(found);
            else if (m_next < m_request.urls.size())
                begin(m_request.urls.at(m_next++), found);
            else
                return false;
            return true;
        }

    private:
        void begin(const QUrl& given, QList<FoundFile>& found)
        {
            const QUrl url = plainUrl(given);
            const QString path = url.toLocalFile();
            if (isSidecar(path))
                return;
            if (!m_request.isFolders
                || (!QFileInfo(path).isDir() && hasAllowedFileType(url.path())))
                found.append({ url, {}, m_request.pageChoices.value(given, u""_s) });
            else if (!path.isEmpty())
                enter(path);
        }

        void enter(const QString& folder)
        {
            m_folder = absolutePath(folder);
            m_walk.emplace(folder, FolderWalk::Order::Listed, m_request.isIncludeSubdirectories);
        }

        void stepInFolder(QList<FoundFile>& found)
        {
            const std::optional<FolderWalk::Entry> entry = m_walk->next();
            if (!entry)
                m_walk.reset();
            else if (!isPath(entry->path) && !entry->fault.isEmpty())
                systemLog(u"The name is no UTF-8 text, so it is left out: "_s + entry->path);
            else if (isPath(entry->path) && !entry->isFolder && hasAllowedFileType(entry->path))
                found.append({ QUrl::fromLocalFile(entry->path), m_folder });
        }

        Arguments m_request;
        qsizetype m_next = 0;
        std::optional<FolderWalk> m_walk; ///< through the folder in hand
        QString m_folder; ///< that one
    };

    // More than one even on a small machine, as they wait for the disk; few, as it is one disk.
    int threadCount() { return std::clamp(QThread::idealThreadCount(), 2, 8); }

    /// One call of addFilesToList or addFolderToList.
    class Load
    {
    public:
        Load(LoaderTarget& target, const Arguments& request)
            : m_target(target)
            , m_search(request)
            , m_ahead(threadCount())
        {
        }

        void run();
        bool hasAdded() const { return m_hasAdded; }

    private:
        bool isWanted() const { return !m_isShutDown && m_target.isProcessing(); }
        QList<FoundFile> findMore();
        Items itemsToDeliver(bool hasFoundMore);
        void deliver(const Items& items, QList<FoundFile>& found);
        void takeOutListed(QList<FoundFile>& found);
        void addSome(const Items& items, qsizetype& next);
        /// On any thread. A file that is not wanted any more is given up.
        std::shared_ptr<FileItem> makeItem(const FoundFile& file) const
        {
            const StopScope scope([this] { return !m_target.isProcessing(); });
            std::shared_ptr<FileItem> item = FileItem::initWithURL(file.url);
            if (item) {
                item->setFoundIn(file.foundIn);
                item->setPageChoice(file.pageChoice);
            }
            return item;
        }

        LoaderTarget& m_target;
        FileSearch m_search;
        WorkQueue<std::shared_ptr<FileItem>> m_ahead;
        bool m_isAtEnd = false; ///< of the search
        bool m_isShutDown = false;
        bool m_hasAdded = false;
        std::exception_ptr m_failure; ///< of the item behind those that are delivered
    };

    void Load::run()
    {
        while (isWanted() && !(m_isAtEnd && m_ahead.pending() == 0)) {
            QList<FoundFile> found = findMore();
            deliver(itemsToDeliver(!found.isEmpty()), found);
            if (m_failure)
                std::rethrow_exception(m_failure);
            for (const FoundFile& file : std::as_const(found))
                m_ahead.add([this, file] { return makeItem(file); });
        }
    }

    QList<FoundFile> Load::findMore()
    {
        QList<FoundFile> found;
        if (m_ahead.pending() >= mostPending)
            return found;
        QElapsedTimer elapsed;
        elapsed.start();
        while (!m_isAtEnd && found.size() < mostFoundAtATime && elapsed.elapsed() < longestSearchMs
               && m_target.isProcessing())
            m_isAtEnd = !m_search.step(found);
        return found;
    }

    // Waits only where there is nothing else to do.
    Items Load::itemsToDeliver(bool hasFoundMore)
    {
        const std::size_t pending = m_ahead.pending();
        Items items;
        try {
            if (pending >= mostPending || (m_isAtEnd && !hasFoundMore && pending > 0))
                items.append(m_ahead.take());
            while (m_ahead.isReady())
                items.append(m_ahead.take());
        } catch (...) {
            m_failure = std::current_exception(); // the items before it count
        }
        return items;
    }

    // Files that the list has already are taken out of `found` on the way.
    void Load::deliver(const Items& items, QList<FoundFile>& found)
    {
        qsizetype next = 0;
        bool isFirst = true;
        while (isWanted() && (next < items.size() || (isFirst && !found.isEmpty()))) {
            m_isShutDown = true; // unless the call is made
            callOnMainThread([&] {
                m_isShutDown = false;
                addSome(items, next);
                if (std::exchange(isFirst, false))
                    takeOutListed(found);
            });
        }
    }

    void Load::takeOutListed(QList<FoundFile>& found)
    {
        QHash<QUrl, QString> choices;
        found.removeIf([&](const FoundFile& file) {
            const bool isListed = m_target.contains(file.url);
            if (isListed && !file.pageChoice.isEmpty())
                choices.insert(file.url, file.pageChoice);
            return isListed;
        });
        if (!choices.isEmpty())
            m_target.choosePages(choices);
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

    bool load(LoaderTarget& target, const Arguments& request, const QString& operation)
    {
        bool hasAdded = false;
        guarded(operation, [&] {
            Load load(target, request);
            const auto keep = qScopeGuard([&] { hasAdded = load.hasAdded(); });
            load.run();
        });
        return hasAdded;
    }

} // namespace

bool FileLoader::addFilesToList(const QList<QUrl>& urls, const QHash<QUrl, QString>& pageChoices)
{
    return load(m_target, { urls, false, false, pageChoices }, u"addFilesToList:"_s);
}

bool FileLoader::addFolderToList(const QList<QUrl>& urls, bool includeSubdirectories)
{
    return load(m_target, { urls, true, includeSubdirectories }, u"addFolderToList:"_s);
}

} // namespace pagestack
