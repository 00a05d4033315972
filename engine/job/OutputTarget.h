#pragma once

#include "engine/files/FileState.h"

#include <QString>

#include <optional>

namespace pagestack {

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
