#pragma once

#include "engine/files/FileState.h"

#include <QSet>
#include <QString>

#include <deque>
#include <filesystem>
#include <optional>
#include <vector>

namespace pagestack {

/// The visible entries of a folder, one a call; a folder comes before its entries. A name with a
/// leading dot is hidden. One thread.
class FolderWalk
{
public:
    enum class Order {
        /// As the file system lists them. Links to folders are not entered. On macOS, packages are
        /// not entered either, and what is marked as hidden is left out.
        Listed,
        /// By name, with naturallyLess(); files before folders. Links to folders are entered too,
        /// after all that is reached without them, but no folder is entered twice.
        Natural,
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

    FolderWalk(const QString& folder, Order order, bool isRecursive);

    /// None at the end.
    std::optional<Entry> next();

private:
    struct Folder
    {
        QString path;
        std::filesystem::directory_iterator unread;
        std::deque<Entry> read;
    };

    void enter(const QString& path);
    void follow(const Entry& folder);
    void read(Folder& folder) const;

    Order m_order;
    bool m_isRecursive;
    std::vector<Folder> m_open; ///< the innermost folder last
    std::deque<QString> m_links; ///< to folders, not entered yet
    QSet<FileIdentity> m_entered;
};

/// Order of names in which digits count as numbers: scan2.tif before scan10.tif. The same in every
/// locale; names that differ are never equal.
bool naturallyLess(const QString& a, const QString& b);

} // namespace pagestack
