#pragma once

#include <QStringList>

namespace pagestack {

/// The extensions of the files that both programs take from folders and that file choosers offer:
/// "tif", "TIF", "tiff", "TIFF", in this order.
const QStringList& allowedFileTypes();

/// Whether the extension of `path` is one of them, letter for letter: that of "a.Tif" is not.
bool hasAllowedFileType(const QString& path);

/// Whether only the case of its letters keeps the extension of `path` from being one of them.
bool hasOddFileType(const QString& path);

/// Whether the file is what other systems put beside one whose file system does not take all that
/// belongs to it: its name begins with "._" and its bytes say so, too (AppleDouble).
bool isSidecar(const QString& path);

} // namespace pagestack
