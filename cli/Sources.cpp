#include "cli/Sources.h"

#include "cli/FolderReader.h"
#include "cli/Options.h"
#include "engine/job/OutputNames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Sign that stands for bytes that are no UTF-8 text; the file cannot be reached by such a
    /// name.
    constexpr QChar undecodable = QChar::ReplacementCharacter;

    bool hasTiffExtension(const QString& name)
    {
        static const QStringList extensions { u".tif"_s, u".TIF"_s, u".tiff"_s, u".TIFF"_s };
        return std::any_of(extensions.begin(), extensions.end(),
                           [&](const QString& extension) { return name.endsWith(extension); });
    }

    /// ".." is not resolved in the text: behind a symbolic link it leads elsewhere.
    QString absolutePath(const QString& path)
    {
        if (!path.split(u'/').contains(u".."_s))
            return QFileInfo(path).absoluteFilePath();
        const QString name = lastPathComponent(path);
        if (name == u"..")
            return QFileInfo(path).canonicalFilePath();
        const QString folder = folderPart(path);
        return joinedPath(QFileInfo(folder).canonicalFilePath(), name);
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
        CollectedSources take() { return std::move(m_found); }

    private:
        void addFile(const QString& shown);
        void addFolder(const QString& shown);
        void readFolder(const QString& shown);
        QString identity(const QString& path);
        void report(const QString& shown, const QString& reason)
        {
            m_found.troubles.append({ shown, reason });
        }

        bool m_isRecursive;
        CollectedSources m_found;
        QSet<QString> m_taken; ///< identities
        QHash<QString, QString> m_canonical; ///< folders, resolved
        QSet<QString> m_entered; ///< canonical folders below the folder in hand
        QStringList m_linked; ///< symbolic links to folders that wait for their turn
    };

    void Collector::addPath(const QString& shown)
    {
        const QFileInfo info(shown);
        if (shown.isEmpty())
            report(u"''"_s, u"the path is empty"_s);
        else if (info.isDir())
            addFolder(shown);
        else
            addFile(shown);
    }

    void Collector::addFile(const QString& shown)
    {
        const QFileInfo info(shown);
        if (shown.contains(undecodable) && !info.exists())
            return report(shown, u"the name is no UTF-8 text"_s);
        if (!info.exists())
            return report(shown, u"no such file or folder"_s);
        if (!info.isFile())
            return report(shown, u"neither a regular file nor a folder"_s);
        const QString path = absolutePath(shown);
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
        auto known = m_canonical.find(folder);
        if (known == m_canonical.end())
            known = m_canonical.insert(folder, QFileInfo(folder).canonicalFilePath());
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
        const QString canonical = QFileInfo(shown).canonicalFilePath();
        if (m_entered.contains(canonical))
            return;
        m_entered.insert(canonical);
        const FolderContents contents = readFolderContents(shown);
        if (!contents.fault.isEmpty())
            report(shown, contents.fault);
        for (const QString& name : contents.files) {
            if (hasTiffExtension(name))
                addFile(joinedPath(shown, name));
        }
        if (!m_isRecursive)
            return;
        for (const FolderContents::Folder& folder : contents.folders) {
            const QString path = joinedPath(shown, folder.name);
            if (folder.name.contains(undecodable) && !QFileInfo::exists(path))
                report(path, u"the name is no UTF-8 text"_s);
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
                found.append(QFile::decodeName(line));
        }
        return found;
    }

    void Collector::addList(const QString& list)
    {
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
