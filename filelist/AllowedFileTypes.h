#pragma once

#include <QStringList>
#include <QStringView>

namespace pagestack {

/// The extensions that the file list looks for in folders and that file choosers offer: "tif",
/// "TIF", "tiff", "TIFF", in this order.
const QStringList& allowedFileTypes();

/// Whether `extension`, without its dot, is one of them, letter for letter: "Tif" is not.
bool isAllowedFileType(QStringView extension);

} // namespace pagestack
