#pragma once

#include <QByteArray>
#include <QHashFunctions>

#include <cstdint>
#include <optional>

struct stat;

namespace pagestack {

/// Identifies a file, whatever path leads to it.
struct FileIdentity
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
    friend std::size_t qHash(const FileIdentity& file, std::size_t seed = 0)
    {
        return qHashMulti(seed, file.device, file.inode);
    }
};

/// Identifies a file and its content: another file under its name, or other bytes in it, make
/// another state.
struct FileState
{
    FileIdentity identity;
    std::int64_t sizeBytes = 0;
    std::int64_t modifiedNs = 0;
    std::int64_t changedNs = 0; ///< inode change time; unlike the other it cannot be set back

    FileState() = default;
    explicit FileState(const struct stat& status);

    friend bool operator==(const FileState&, const FileState&) = default;
};

/// Of the file or folder that `path` leads to, links followed; none when there is nothing.
std::optional<FileState> fileState(const QByteArray& path);
std::optional<FileIdentity> fileIdentity(const QByteArray& path);

} // namespace pagestack
