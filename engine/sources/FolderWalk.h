#pragma once

#include "engine/files/FileState.h"

#include <QSet>
#include <QString>

#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace pagestack {

/// The visible entries of a folder, one a call, by name, with naturallyLess(); files before
/// folders, a folder before its entries. A name with a leading dot is hidden. One thread.
///
/// The wanted names of the folder in hand, and of those that lead to it, are held. A StopScope of
/// the thread ends the reading of a long folder.
class FolderWalk
{
public:
    enum class Links {
        /// Links to folders are not entered. On macOS, packages are not entered either, and what is
        /// marked as hidden is left out.
        Left,
        /// Links to folders are entered too, after all that is reached without them, but no folder
        /// is entered twice.
        Followed,
    };

    struct Entry
    {
        /// Behind the path of the folder of the walk. Not a path (see isPath()) if the name is not
        /// text.
        QString path;
        bool isFolder = false; ///< links followed
        bool isLink = false; ///< of folders only
        /// The reason why the entry cannot be told, or why a folder cannot be read to its end.
        QString fault {};
    };

    /// By the name of a file.
    using Wanted = std::function<bool(const QString& name)>;

    /// Files that are not `wanted` are counted alone, unless their names are no text.
    FolderWalk(const QString& folder, Links links, bool isRecursive, Wanted wanted);

    /// None at the end.
    std::optional<Entry> next();
    /// The number of files left out since the last call.
    int takeUnwanted() { return std::exchange(m_unwanted, 0); }

private:
    struct Name
    {
        QString text;
        bool isFolder;
        bool isLink;
    };
    struct Folder
    {
        QString path;
        std::vector<Name> names; ///< in order
        std::size_t next = 0;
        QString fault {}; ///< told at the end
    };

    void enter(const QString& path);
    void follow(const Entry& folder);
    void read(Folder& folder);
    Entry entryOf(const Folder& folder, const Name& name) const;
    static bool isListedBefore(const Name& a, const Name& b);

    Links m_linkRule;
    bool m_isRecursive;
    Wanted m_isWanted;
    int m_unwanted = 0;
    std::vector<Folder> m_open; ///< the innermost folder last
    std::deque<QString> m_links; ///< to folders, not entered yet
    QSet<FileIdentity> m_entered;
};

/// Order of names in which digits count as numbers: scan2.tif before scan10.tif. The same in every
/// locale; names that differ are never equal.
bool naturallyLess(const QString& a, const QString& b);

} // namespace pagestack
