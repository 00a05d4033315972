#pragma once

#include <QString>

namespace pagestack {

class Settings;
struct OutputFile;

/// The last component of `path`: "scan.tif" of "/in/scan.tif". Trailing slashes do not count; the
/// root stays "/".
QString lastPathComponent(const QString& path);

/// `path` without its last component: "/in" of "/in/scan.tif", "/" of "/scan.tif", empty for a
/// bare name.
QString folderPart(const QString& path);

/// `name` inside `folder`; `name` alone when `folder` is empty.
QString joinedPath(const QString& folder, const QString& name);

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
