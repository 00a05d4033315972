#pragma once

#include <QString>

namespace pagestack {

/// Which differences between names a file system overlooks.
struct NameFolding
{
    bool ignoresCase = true;
    bool ignoresNormalization = true;

    /// Equal for names that lead to the same file.
    QString folded(const QString& name) const;
};

/// Of the file system at `folder`, or at the nearest folder above that exists. A file is made there
/// for a moment; where none can be made, both differences count as overlooked. Any thread.
NameFolding nameFolding(const QString& folder);

} // namespace pagestack
