#pragma once

#include <QString>

namespace pagestack {

/// The differences between names that a file system ignores.
struct NameFolding
{
    bool ignoresCase = true;
    bool ignoresNormalization = true;

    /// Equal for names that lead to the same file.
    QString folded(const QString& name) const;
};

/// Returns the folding of the file system at `folder`, or at the nearest existing folder above.
/// Creates a file there for a moment; if that fails, both differences count as ignored. Any thread.
NameFolding nameFolding(const QString& folder);

} // namespace pagestack
