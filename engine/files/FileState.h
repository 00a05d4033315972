#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>

struct stat;

namespace pagestack {

/// Which file it is, whatever the path that leads to it.
struct FileIdentity
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// Which file it is, and what tells whether it was written to since: another file under its name,
/// or other bytes in it, make another state.
struct FileState
{
    FileIdentity identity;
    std::int64_t sizeBytes = 0;
    std::int64_t modifiedNs = 0;
    std::int64_t changedNs = 0; ///< of its description: what sets the other time back sets this one

    FileState() = default;
    explicit FileState(const struct stat& status);

    friend bool operator==(const FileState&, const FileState&) = default;
};

/// Of the file or folder that `path` leads to, links followed; none when there is nothing.
std::optional<FileState> fileState(const QByteArray& path);
std::optional<FileIdentity> fileIdentity(const QByteArray& path);

} // namespace pagestack
