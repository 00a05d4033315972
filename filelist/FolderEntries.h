#pragma once

#include <QString>

#include <filesystem>
#include <optional>
#include <vector>

namespace pagestack {

/// What is visible in a folder, one entry a call, in the order in which the file system tells it; a
/// folder comes before what is in it.
///
/// Left out: names with a leading dot (on macOS also entries that are marked as hidden) and the
/// contents of packages, which only macOS has. Links to folders are told as folders but not
/// followed, so no entry is seen twice. A folder that cannot be read is empty. One thread.
class FolderEntries
{
public:
    struct Entry
    {
        /// Path with the folder's own path in front. A name that is no UTF-8 text cannot be told
        /// and leads to no file.
        QString path;
        bool isDirectory = false; ///< links followed
    };

    FolderEntries(const QString& folder, bool includeSubdirectories);

    /// None at the end.
    std::optional<Entry> next();

private:
    void open(const std::filesystem::path& folder);

    bool m_includeSubdirectories;
    std::vector<std::filesystem::directory_iterator> m_open; ///< the innermost folder last
};

} // namespace pagestack
