#pragma once

#include "engine/files/ByteSpool.h"
#include "engine/files/FileDigest.h"

#include <QHash>
#include <QString>

#include <optional>
#include <vector>

namespace pagestack {

/// Collects the checksums of a run's outputs and writes a file SHA256SUMS into each of their
/// folders, as `sha256sum -c` reads it. One thread at a time.
///
/// Memory does not follow the number of outputs, but for a few bytes each of the folder that is
/// written.
class ChecksumFiles
{
public:
    /// `path` is that of a file that is in place. Throws std::runtime_error when there is no room.
    void add(const QString& path, const FileDigest& digest);

    struct Trouble
    {
        QString path; ///< of the SHA256SUMS
        QString reason;
    };

    /// Writes the files. Lines of other files in one that is there stay as they are; those of the
    /// files that were added are replaced. A file with lines that sha256sum does not write is left
    /// as it is. Returns what could not be written.
    std::vector<Trouble> write();

    /// The name as such a line has it, and whether the line begins with a backslash for it.
    static QByteArray escaped(const QByteArray& name, bool& isEscaped);

private:
    void writeOne(const QString& path, std::uint64_t lastEntry);
    QByteArray entryAt(std::uint64_t offset, std::uint64_t& before);

    ByteSpool m_entries; ///< lines, each behind its length and the place of its folder's last one
    QHash<QString, std::uint64_t> m_lastEntries; ///< by folder; 0: none
};

} // namespace pagestack
