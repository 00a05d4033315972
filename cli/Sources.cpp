#include "cli/Sources.h"

#include "cli/FolderReader.h"
#include "cli/Options.h"
#include "engine/files/FileState.h"
#include "engine/plan/OutputNames.h"
#include "engine/support/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <cstdio>

#include <optional>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString noText = u"the name is no UTF-8 text"_s;

    bool hasTiffExtension(const QString& name)
    {
        static const QStringList extensions { u".tif"_s, u".TIF"_s, u".tiff"_s, u".TIFF"_s };
        return std::any_of(extensions.begin(), extensions.end(),
                           [&](const QString& extension) { return name.endsWith(extension); });
    }

    /// "Mixed.Tif".
    bool hasOddTiffExtension(const QString& name)
    {
        return !hasTiffExtension(name)
            && (name.endsWith(u".tif", Qt::CaseInsensitive)
                || name.endsWith(u".tiff", Qt::CaseInsensitive));
    }

    /// Qt shows the working folder, and what a link leads to, as text even where it is none.
    bool leadsToSameFile(const QString& path, const QString& shown)
    {
        return fileIdentity(QFile::encodeName(path)) == fileIdentity(QFile::encodeName(shown));
    }

    /// The same for every path that leads to the folder.
    QString folderKey(const QString& folder)
    {
        const std::optional<FileIdentity> identity = fileIdentity(QFile::encodeName(folder));
        return identity ? u"%1 %2"_s.arg(identity->device).arg(identity->inode) : folder;
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
        void addFile(const QString& shown);
        void addFolder(const QString& shown);
        void readFolder(const QString& shown);
        QString identity(const QString& path);
        void report(const QString& shown, const QString& reason)
        {
            m_found.troubles.append({ QString(shown).remove(QChar::Null), reason });
        }

        bool m_isRecursive;
        CollectedSources m_found;
        QSet<QString> m_taken; ///< identities
        QHash<QString, QString> m_folders; ///< their keys
        QSet<QString> m_entered; ///< keys of folders below the folder in hand
        QStringList m_linked; ///< symbolic links to folders that wait for their turn
    };

    /// A file that is left out here may be named elsewhere.
    CollectedSources Collector::take()
    {
        m_found.leftOut.removeIf([this](const QString& shown) {
            return m_taken.contains(identity(absolutePath(shown)));
        });
        return std::move(m_found);
    }

    void Collector::addPath(const QString& shown)
    {
        if (shown.isEmpty())
            report(u"''"_s, u"the path is empty"_s);
        else if (!isPath(shown))
            report(shown, noText);
        else if (QFileInfo(shown).isDir())
            addFolder(shown);
        else
            addFile(shown);
    }

    void Collector::addFile(const QString& shown)
    {
        if (!isPath(shown))
            return report(shown, noText);
        const QFileInfo info(shown);
        if (!info.exists())
            return report(shown, u"no such file or folder"_s);
        if (!info.isFile())
            return report(shown, u"neither a regular file nor a folder"_s);
        const QString path = absolutePath(shown);
        if (!leadsToSameFile(path, shown))
            return report(shown, u"the name of its folder is no UTF-8 text"_s);
        const qsizetype before = m_taken.size();
        m_taken.insert(identity(path));
        if (m_taken.size() == before)
            m_found.duplicates.append(shown);
        else
            m_found.files.append({ path, shown });
    }

    /// One file by two ways through its folders is the same; a link to a file is a file of its own.
    QString Collector::identity(const QString& path)
    {
        const QString folder = folderPart(path);
        auto known = m_folders.find(folder);
        if (known == m_folders.end())
            known = m_folders.insert(folder, folderKey(folder));
        return joinedPath(*known, lastPathComponent(path));
    }

    // Folders that are reached through links come last, so that a file is shown by its own path
    // where it has one below the same folder.
    void Collector::addFolder(const QString& shown)
    {
        m_entered.clear();
        readFolder(shown);
        while (!m_linked.isEmpty())
            readFolder(m_linked.takeFirst());
    }

    void Collector::readFolder(const QString& shown)
    {
        const QString key = folderKey(shown);
        if (m_entered.contains(key))
            return;
        m_entered.insert(key);
        const FolderContents contents = readFolderContents(shown);
        if (!contents.fault.isEmpty())
            report(shown, contents.fault);
        for (const QString& name : contents.files) {
            if (hasTiffExtension(name))
                addFile(joinedPath(shown, name));
            else if (hasOddTiffExtension(name))
                m_found.leftOut.append(joinedPath(shown, name));
        }
        if (!m_isRecursive)
            return;
        for (const FolderContents::Folder& folder : contents.folders) {
            const QString path = joinedPath(shown, folder.name);
            if (!isPath(path))
                report(path, noText);
            else if (folder.isLink)
                m_linked.append(path);
            else
                readFolder(path);
        }
    }

    /// A list from another system may end its lines in CR LF and begin with a byte order mark.
    QStringList lines(const QByteArray& text)
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

    void Collector::addList(const QString& list)
    {
        if (!isPath(list))
            return report(list, noText);
        const bool isStandardInput = list == u"-";
        QFile file(list);
        const bool isOpen = isStandardInput ? file.open(stdin, QIODevice::ReadOnly)
                                            : file.open(QIODevice::ReadOnly);
        const QByteArray text = isOpen ? file.readAll() : QByteArray();
        if (!isOpen || file.error() != QFileDevice::NoError)
            return report(isStandardInput ? u"standard input"_s : list, file.errorString());
        for (const QString& line : lines(text))
            addPath(line);
    }

} // namespace

CollectedSources collectSources(const Options& options)
{
    Collector collector(options.isRecursive);
    for (const QString& source : options.sources)
        collector.addPath(source);
    QStringList lists = options.pathLists;
    lists.removeDuplicates(); // Standard input can be read once.
    for (const QString& list : lists)
        collector.addList(list);
    return collector.take();
}

} // namespace pagestack
