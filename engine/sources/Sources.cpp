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

    /// Looks up what was given.
    class Finder
    {
    public:
        Finder(const SourceSink& sink, bool isRecursive)
            : m_sink(sink)
            , m_isRecursive(isRecursive)
        {
        }

        void addList(const QString& list);
        void addPath(const QString& shown);

    private:
        void addLine(const QByteArray& line);
        void addFile(const QString& shown, const QString& foundIn = {});
        void addFolder(const QString& shown);
        void report(const QString& shown, const QString& reason)
        {
            m_sink.trouble({ QString(shown).remove(QChar::Null), reason });
        }

        const SourceSink& m_sink;
        bool m_isRecursive;
        QString m_pageChoice { u""_s }; ///< of the path in hand
    };

    void Finder::addPath(const QString& shown)
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

    void Finder::addFile(const QString& shown, const QString& foundIn)
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
        m_sink.file({ path, shown, foundIn, m_pageChoice });
    }

    void Finder::addFolder(const QString& shown)
    {
        const QString folder = absolutePath(shown);
        FolderWalk walk(shown, FolderWalk::Links::Followed, m_isRecursive, [](const QString& name) {
            return hasAllowedFileType(name) || hasOddFileType(name);
        });
        while (const auto entry = walk.next()) {
            const bool isFile = !entry->isFolder;
            if (isFile && !hasAllowedFileType(entry->path)) {
                if (hasOddFileType(entry->path))
                    m_sink.leftOut(entry->path);
            } else if (!entry->fault.isEmpty()) {
                report(entry->path, entry->fault);
            } else if (isFile) {
                addFile(entry->path, folder);
            }
        }
    }

    /// A list from another system may end its lines in CR LF and begin with a byte order mark.
    void Finder::addList(const QString& list)
    {
        if (!isPath(list))
            return report(list, u"the name is no UTF-8 text"_s);
        const bool isStandardInput = list == u"-";
        QFile file(list);
        const bool isOpen = isStandardInput ? file.open(stdin, QIODevice::ReadOnly)
                                            : file.open(QIODevice::ReadOnly);
        for (bool isFirst = true; isOpen; isFirst = false) {
            QByteArray line = file.readLine();
            if (line.isEmpty())
                break;
            if (line.endsWith('\n'))
                line.chop(1);
            if (line.endsWith('\r'))
                line.chop(1);
            if (isFirst && line.startsWith("\xEF\xBB\xBF"))
                line.remove(0, 3);
            if (!line.isEmpty())
                addLine(line);
        }
        if (!isOpen || file.error() != QFileDevice::NoError)
            report(isStandardInput ? u"standard input"_s : list, file.errorString());
    }

    void Finder::addLine(const QByteArray& line)
    {
        QString path = pathFromBytes(line);
        const QFileInfo info(path);
        if (path.contains(u'\t') && isPath(path) && !info.exists() && !info.isSymLink())
            m_pageChoice = takePageChoice(path);
        addPath(path);
        m_pageChoice = u""_s;
    }

    /// Keeps what is found, no file twice.
    class Collector
    {
    public:
        void add(const Source& source);
        CollectedSources take();

        CollectedSources found;

    private:
        using FileKey = std::pair<FileIdentity, QString>;

        FileKey key(const QString& path);

        QHash<FileKey, QString> m_taken; ///< with the choice of its pages
        QHash<QString, std::optional<FileIdentity>> m_folders;
    };

    /// A file that is left out here may be named elsewhere.
    CollectedSources Collector::take()
    {
        found.leftOut.removeIf(
            [this](const QString& shown) { return m_taken.contains(key(absolutePath(shown))); });
        return std::move(found);
    }

    void Collector::add(const Source& source)
    {
        const FileKey file = key(source.path);
        const auto taken = m_taken.constFind(file);
        if (taken == m_taken.cend()) {
            m_taken.insert(file, source.pageChoice);
            found.files.append(source);
        } else if (*taken == source.pageChoice) {
            found.duplicates.append(source.shown);
        } else {
            found.troubles.append({ source.shown, namedTwice.toString() });
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

} // namespace

void forEachSource(const QStringList& paths, QStringList lists, bool isRecursive,
                   const SourceSink& sink)
{
    Finder finder(sink, isRecursive);
    for (const QString& path : paths)
        finder.addPath(path);
    lists.removeDuplicates(); // Standard input can be read once.
    for (const QString& list : std::as_const(lists))
        finder.addList(list);
}

CollectedSources collectSources(const QStringList& paths, QStringList lists, bool isRecursive)
{
    Collector collector;
    forEachSource(
        paths, std::move(lists), isRecursive,
        { .file = [&](const Source& source) { collector.add(source); },
          .trouble = [&](const PathTrouble& trouble) { collector.found.troubles.append(trouble); },
          .leftOut = [&](const QString& shown) { collector.found.leftOut.append(shown); } });
    return collector.take();
}

} // namespace pagestack
