#include "engine/sources/Sources.h"

#include "engine/files/FileState.h"
#include "engine/sources/AllowedFileTypes.h"
#include "engine/sources/FolderWalk.h"
#include "engine/sources/PathList.h"
#include "engine/support/Paths.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <cstdio>

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    std::optional<FileIdentity> identityOf(const QString& path)
    {
        return fileIdentity(QFile::encodeName(path));
    }

    /// A list from another system may end its lines in CR LF and begin with a byte order mark.
    QStringList pathsOf(const QByteArray& text)
    {
        QStringList found;
        for (QByteArray line : text.split('\n')) {
            if (line.endsWith('\r'))
                line.chop(1);
            if (found.isEmpty() && line.startsWith("\xEF\xBB\xBF"))
                line.remove(0, 3);
            if (!line.isEmpty())
                found.append(pathFromBytes(line));
        }
        return found;
    }

    class Collector
    {
    public:
        explicit Collector(bool isRecursive)
            : m_isRecursive(isRecursive)
        {
        }

        void addList(const QString& list);
        void addPath(const QString& shown);
        CollectedSources take();

    private:
        using FileKey = std::pair<FileIdentity, QString>;

        void addFile(const QString& shown, const QString& foundIn = {});
        void addFolder(const QString& shown);
        FileKey key(const QString& path);
        void report(const QString& shown, const QString& reason)
        {
            m_found.troubles.append({ QString(shown).remove(QChar::Null), reason });
        }

        bool m_isRecursive;
        CollectedSources m_found;
        QHash<FileKey, QString> m_taken; ///< with the choice of its pages
        QString m_pageChoice; ///< of the path in hand
        QHash<QString, std::optional<FileIdentity>> m_folders;
    };

    /// A file that is left out here may be named elsewhere.
    CollectedSources Collector::take()
    {
        m_found.leftOut.removeIf(
            [this](const QString& shown) { return m_taken.contains(key(absolutePath(shown))); });
        return std::move(m_found);
    }

    void Collector::addPath(const QString& shown)
    {
        if (shown.isEmpty())
            report(u"''"_s, u"the path is empty"_s);
        else if (!isPath(shown))
            report(shown, u"the name is no UTF-8 text"_s);
        else if (QFileInfo(shown).isDir())
            addFolder(shown);
        else
            addFile(shown);
    }

    void Collector::addFile(const QString& shown, const QString& foundIn)
    {
        const QFileInfo info(shown);
        if (!info.exists())
            return report(shown, u"no such file or folder"_s);
        if (!info.isFile())
            return report(shown, u"neither a regular file nor a folder"_s);
        if (isSidecar(shown))
            return;
        const QString path = absolutePath(shown);
        // Qt shows the working folder, and what a link leads to, as text even where it is none.
        if (identityOf(path) != identityOf(shown))
            return report(shown, u"the name of its folder is no UTF-8 text"_s);
        const FileKey file = key(path);
        const auto taken = m_taken.constFind(file);
        if (taken == m_taken.cend()) {
            m_taken.insert(file, m_pageChoice);
            m_found.files.append({ path, shown, foundIn, m_pageChoice });
        } else if (*taken == m_pageChoice) {
            m_found.duplicates.append(shown);
        } else {
            report(shown, u"named twice with different pages; those named first are converted"_s);
        }
    }

    /// One file by two ways through its folders is the same; a link to a file is a file of its own.
    Collector::FileKey Collector::key(const QString& path)
    {
        const QString folder = folderPart(path);
        auto known = m_folders.find(folder);
        if (known == m_folders.end())
            known = m_folders.insert(folder, identityOf(folder));
        return *known ? FileKey { **known, lastPathComponent(path) } : FileKey { {}, path };
    }

    void Collector::addFolder(const QString& shown)
    {
        const QString folder = absolutePath(shown);
        FolderWalk walk(shown, FolderWalk::Links::Followed, m_isRecursive, [](const QString& name) {
            return hasAllowedFileType(name) || hasOddFileType(name);
        });
        while (const auto entry = walk.next()) {
            const bool isFile = !entry->isFolder;
            if (isFile && !hasAllowedFileType(entry->path)) {
                if (hasOddFileType(entry->path))
                    m_found.leftOut.append(entry->path);
            } else if (!entry->fault.isEmpty()) {
                report(entry->path, entry->fault);
            } else if (isFile) {
                addFile(entry->path, folder);
            }
        }
    }

    void Collector::addList(const QString& list)
    {
        if (!isPath(list))
            return report(list, u"the name is no UTF-8 text"_s);
        const bool isStandardInput = list == u"-";
        QFile file(list);
        const bool isOpen = isStandardInput ? file.open(stdin, QIODevice::ReadOnly)
                                            : file.open(QIODevice::ReadOnly);
        const QByteArray text = isOpen ? file.readAll() : QByteArray();
        if (!isOpen || file.error() != QFileDevice::NoError)
            return report(isStandardInput ? u"standard input"_s : list, file.errorString());
        for (QString path : pathsOf(text)) {
            const QFileInfo info(path);
            if (!path.contains(u'\t') || !isPath(path) || info.exists() || info.isSymLink()) {
                addPath(path);
                continue;
            }
            m_pageChoice = takePageChoice(path);
            addPath(path);
            m_pageChoice.clear();
        }
    }

} // namespace

CollectedSources collectSources(const QStringList& paths, QStringList lists, bool isRecursive)
{
    Collector collector(isRecursive);
    for (const QString& path : paths)
        collector.addPath(path);
    lists.removeDuplicates(); // Standard input can be read once.
    for (const QString& list : std::as_const(lists))
        collector.addList(list);
    return collector.take();
}

} // namespace pagestack
