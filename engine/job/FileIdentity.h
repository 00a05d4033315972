#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>

namespace pagestack {

/// Which file it is, whatever the path that leads to it.
struct FileIdentity
{
    std::uint64_t device = 0;
    std::uint64_t inode = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// The file or folder that `path` leads to, links followed; none when there is nothing.
std::optional<FileIdentity> fileIdentity(const QByteArray& path);

/// Where an output goes, as it was when this was made.
class OutputTarget
{
public:
    explicit OutputTarget(const QString& path);

    /// True when the two end in one file, or could: names that differ in case only are one on some
    /// file systems.
    bool isSameAs(const OutputTarget& other) const;

    /// True when `file` is what the output replaces, under this or another name.
    bool replaces(const FileIdentity& file) const { return m_existing == file; }

private:
    std::optional<FileIdentity> m_folder; ///< none: no such folder
    QString m_name; ///< folded; the whole path when there is no folder
    std::optional<FileIdentity> m_existing;
};

} // namespace pagestack
