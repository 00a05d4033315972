#include "filelist/FileLoader.h"

#include "engine/sources/AllowedFileTypes.h"
#include "engine/sources/FolderWalk.h"
#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/MainThread.h"
#include "engine/threads/StopScope.h"
#include "engine/threads/WorkQueue.h"
#include "filelist/Arguments.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <tuple>
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
        FileSearch(Arguments request, Addition& addition)
            : m_request(std::move(request))
            , m_addition(addition)
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
            if (!url.isLocalFile() || path.isEmpty())
                return m_addition.refuse(url.toString(), u"it is no file of this computer"_s);
            if (isSidecar(path))
                return;
            if (!FileItem::hasTextPath(url))
                m_addition.refuse(path, u"the name is no UTF-8 text"_s);
            const bool isFolder = m_request.isFolders && QFileInfo(path).isDir();
            if (!m_request.isFolders || (!isFolder && hasAllowedFileType(url.path())))
                found.append({ url, {}, m_request.pageChoices.value(given, u""_s) });
            else if (isFolder)
                enter(path);
            else if (!FileItem::hasTextPath(url))
                return;
            else if (QFileInfo::exists(path))
                ++m_addition.notTiff;
            else
                m_addition.refuse(path, whyUnseen(path));
        }

        /// Missing, or kept from this program.
        static QString whyUnseen(const QString& path)
        {
            std::error_code error;
            std::ignore = std::filesystem::status(QFile::encodeName(path).toStdString(), error);
            return QString::fromLocal8Bit(error.message().c_str());
        }

        void enter(const QString& folder)
        {
            m_folder = absolutePath(folder);
            m_walk.emplace(folder, FolderWalk::Links::Left, m_request.isIncludeSubdirectories,
                           &hasAllowedFileType);
        }

        void stepInFolder(QList<FoundFile>& found)
        {
            const std::optional<FolderWalk::Entry> entry = m_walk->next();
            m_addition.notTiff += m_walk->takeUnwanted();
            if (!entry)
                m_walk.reset();
            else if (!entry->fault.isEmpty())
                leaveOut(*entry);
            else if (entry->isFolder)
                m_addition.unsearched += m_request.isIncludeSubdirectories ? 0 : 1;
            else
                found.append({ QUrl::fromLocalFile(entry->path), m_folder });
        }

        void leaveOut(const FolderWalk::Entry& entry)
        {
            if (!isPath(entry.path))
                systemLog(u"The name is no UTF-8 text, so it is left out: "_s + entry.path);
            m_addition.refuse(entry.path, entry.fault);
        }

        Arguments m_request;
        Addition& m_addition;
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
        Load(LoaderTarget& target, const Arguments& request, Addition& addition)
            : m_target(target)
            , m_addition(addition)
            , m_search(request, addition)
            , m_ahead(threadCount())
        {
        }

        void run();

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
        Addition& m_addition;
        FileSearch m_search;
        WorkQueue<std::shared_ptr<FileItem>> m_ahead;
        bool m_isAtEnd = false; ///< of the search
        bool m_isShutDown = false;
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
        if (!isWanted())
            m_addition.end = Addition::End::Cancelled;
    }

    QList<FoundFile> Load::findMore()
    {
        QList<FoundFile> found;
        const StopScope scope([this] { return !m_target.isProcessing(); });
        if (m_ahead.pending() >= mostPending)
            return found;
        const QDeadlineTimer end(longestSearchMs);
        while (!m_isAtEnd && found.size() < mostFoundAtATime && !end.hasExpired()
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
            m_addition.listed += isListed ? 1 : 0;
            if (isListed && !file.pageChoice.isEmpty())
                choices.insert(file.url, file.pageChoice);
            return isListed;
        });
        if (!choices.isEmpty())
            m_target.choosePages(choices);
    }

    void Load::addSome(const Items& items, qsizetype& next)
    {
        const QDeadlineTimer end(longestCallMs);
        while (next < items.size() && !end.hasExpired()) {
            if (!m_target.isProcessing())
                return;
            const std::shared_ptr<FileItem>& item = items.at(next++);
            if (!item)
                continue;
            if (!m_target.append(item)) {
                ++m_addition.listed;
                continue;
            }
            ++m_addition.added;
            m_target.updateTotalPagesLabel();
        }
    }

    Addition load(LoaderTarget& target, const Arguments& request, const QString& operation)
    {
        Addition addition;
        if (!guarded(operation, [&] { Load(target, request, addition).run(); }))
            addition.end = Addition::End::Failed;
        return addition;
    }

} // namespace

bool FileLoader::addFilesToList(const QList<QUrl>& urls, const QHash<QUrl, QString>& pageChoices)
{
    m_addition = load(m_target, { urls, false, false, pageChoices }, u"addFilesToList:"_s);
    return m_addition.added > 0;
}

bool FileLoader::addFolderToList(const QList<QUrl>& urls, bool includeSubdirectories)
{
    m_addition = load(m_target, { urls, true, includeSubdirectories }, u"addFolderToList:"_s);
    return m_addition.added > 0;
}

} // namespace pagestack
