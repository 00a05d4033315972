#include "cli/Preflight.h"

#include "cli/LogCopy.h"
#include "cli/Options.h"
#include "engine/files/FileState.h"
#include "engine/files/StagedFile.h"
#include "engine/job/OutputNames.h"
#include "engine/settings/Settings.h"
#include "engine/support/PathName.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <optional>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qsizetype shownFindings = 10;

    /// Paths that lead to the same place by different folders, or mounts, made equal.
    class Places
    {
    public:
        QString key(const QString& path)
        {
            const QString folder = folderPart(path);
            auto known = m_folders.find(folder);
            if (known == m_folders.end())
                known = m_folders.insert(folder, folderKey(folder));
            return joinedPath(*known, lastPathComponent(path));
        }

    private:
        /// Of a folder that is still to be made, by the one above.
        QString folderKey(const QString& folder)
        {
            const std::optional<FileIdentity> identity = fileIdentity(QFile::encodeName(folder));
            if (identity)
                return u"%1 %2"_s.arg(identity->device).arg(identity->inode);
            return folder.size() > 1 ? key(folder) : folder;
        }

        QHash<QString, QString> m_folders;
    };

    class TargetFinder
    {
    public:
        TargetFinder(const QList<Source>& sources, const Settings& settings, const Options& options)
            : m_settings(settings)
            , m_options(options)
            , m_unknown(sources)
        {
            for (const Source& source : sources)
                m_sources.insert(m_places.key(source.path), source.shown);
            if (!options.logFile.isEmpty() && !LogCopy::isStandardOutput(options.logFile))
                m_owners.insert(m_places.key(logTarget(options)), u"the log"_s);
        }

        void add(const Source& source, const OutputFile& output)
        {
            int pages = 0;
            for (const auto& item : output.fileItems)
                pages += item->pages();
            if (pages > 0 && m_options.outputFolder.isEmpty())
                checkFolder(source);
            if (isKeptTogether(m_settings) && pages > 0)
                addTarget(source, keptTogetherOutputName(source.path));
            if (isKeptTogether(m_settings))
                return;
            for (int page = 1; page <= pages; ++page)
                addTarget(source, pageOutputName(source.path, m_settings, page));
        }

        TargetFindings take() { return std::move(m_found); }

    private:
        void checkFolder(const Source& source)
        {
            const QString folder = folderPart(source.path);
            if (m_checkedFolders.contains(folder))
                return;
            m_checkedFolders.insert(folder);
            if (!QFileInfo(folder).isWritable())
                m_found.unwritable.add(u"folder %1 is not writable"_s.arg(folder));
        }

        void addTarget(const Source& source, const QString& name)
        {
            const QString path = joinedPath(outputFolder(source.path, m_settings), name);
            const QString key = m_places.key(path);
            const QString shown = shownTarget(source, name, m_options);
            if (const auto owner = m_owners.constFind(key); owner != m_owners.cend())
                m_found.shared.add(
                    u"%1 is wanted by %2 and by %3"_s.arg(shown, *owner, source.shown));
            else
                m_owners.insert(key, source.shown);
            if (const QFileInfo info(path); info.exists() || info.isSymLink())
                m_found.existing.add(u"%1 exists already"_s.arg(shown));
            const QString replaced = replacedSource(path, key);
            if (!replaced.isNull() && replaced != source.shown)
                m_found.replacedSources.add(u"%1 is a source and is replaced by output of %2"_s.arg(
                    replaced, source.shown));
        }

        /// The source, as shown, that is at `path` or at the end of a link there; null for none.
        QString replacedSource(const QString& path, const QString& key)
        {
            if (!QFileInfo(path).isSymLink())
                return m_sources.value(key);
            for (const Source& source : std::exchange(m_unknown, {}))
                if (const auto identity = fileIdentity(QFile::encodeName(source.path)))
                    m_identities.insert({ identity->device, identity->inode }, source.shown);
            const auto end = fileIdentity(QFile::encodeName(path));
            return end ? m_identities.value({ end->device, end->inode }) : QString();
        }

        const Settings& m_settings;
        const Options& m_options;
        Places m_places;
        QSet<QString> m_checkedFolders;
        QHash<QString, QString> m_sources; ///< shown, by key
        QList<Source> m_unknown; ///< not in m_identities, which is filled at the first link
        QHash<std::pair<quint64, quint64>, QString> m_identities; ///< shown, by device and inode
        QHash<QString, QString> m_owners; ///< who writes a target, by key
        TargetFindings m_found;
    };

} // namespace

QString logTarget(const Options& options)
try {
    return QFile::decodeName(StagedFile::resolvedTarget(options.logFile));
} catch (const std::runtime_error&) {
    return absolutePath(options.logFile); // Links in a circle: the writer will say so.
}

QString checkedOutputFolder(const QString& folder)
{
    QString path = absolutePath(folder);
    const QFileInfo info(path);
    if (info.exists() && !info.isDir())
        throw OutputRefused(u"output folder %1 is no folder"_s.arg(folder));
    if (info.exists() && !info.isWritable())
        throw OutputRefused(u"output folder %1 is not writable"_s.arg(folder));
    const QFileInfo parent(folderPart(path));
    if (!info.exists() && !parent.isDir())
        throw OutputRefused(u"output folder %1 and its parent are missing"_s.arg(folder));
    if (!info.exists() && !parent.isWritable())
        throw OutputRefused(u"output folder %1 cannot be made"_s.arg(folder));
    return path;
}

void makeOutputFolder(const QString& path)
{
    if (!QFileInfo(path).isDir() && !QDir().mkdir(path))
        throw OutputRefused(u"output folder %1 cannot be made"_s.arg(path));
}

void Findings::add(const QString& text)
{
    if (m_count++ < shownFindings)
        m_first.append(text);
}

void Findings::add(const Findings& later)
{
    m_first = (m_first + later.m_first).mid(0, shownFindings);
    m_count += later.m_count;
}

QStringList Findings::lines() const
{
    if (m_count <= shownFindings)
        return m_first;
    return m_first + QStringList { u"and %1 more"_s.arg(m_count - shownFindings) };
}

TargetFindings findTargets(const QList<Source>& sources, const QList<OutputFile>& outputs,
                           const Settings& settings, const Options& options)
{
    TargetFinder finder(sources, settings, options);
    for (qsizetype i = 0; i < sources.size(); ++i)
        finder.add(sources.at(i), outputs.at(i));
    return finder.take();
}

QString shownTarget(const Source& source, const QString& name, const Options& options)
{
    return joinedPath(
        options.outputFolder.isEmpty() ? folderPart(source.shown) : options.outputFolder, name);
}

} // namespace pagestack
