#pragma once

#include "engine/support/Paths.h"

#include <QString>

namespace pagestack {

class Settings;
struct OutputFile;

/// Folder into which the pages of `sourcePath` go: the settings' output folder, else the folder of
/// the source itself.
QString outputFolder(const QString& sourcePath, const Settings& settings);

/// File name (without folder) of the output for `page`, counted from 1: the source's name without
/// its last extension, the separator (":" of both becomes "-"), the number, the extension of the
/// output type. An output type outside 0..4 gives the part before the number alone. A `number`
/// above 0 (see OutputFile) stands before the extension, behind a "-".
QString pageOutputName(const QString& sourcePath, const Settings& settings, int page,
                       int number = 0);

/// File name (without folder) of the one TIFF file that keeps all pages of `sourcePath` together.
QString keptTogetherOutputName(const QString& sourcePath, int number = 0);

/// Name of the file with `page` of `output`; page 0: of the file that keeps the pages together.
QString outputName(const OutputFile& output, const Settings& settings, int page);

/// True when `settings` ask for one TIFF file a source, not for one file a page.
bool isKeptTogether(const Settings& settings);

} // namespace pagestack
