#pragma once

#include <QString>

namespace pagestack {

/// The text of the script that opens the file manager's information window for the file at `path`,
/// an absolute path with '/' between its names. Four lines without a line feed after the last. The
/// file is named by its folders, the innermost first, on the startup disk. Names stand in the text
/// as they are, which is only good for those that isSafeInScript() lets pass. Any thread.
QString informationScript(const QString& path);

/// Whether that script does nothing but name the file. The path is put into it as it is, so a quote
/// or a backslash in a name could end the name early and make a command of the rest.
bool isSafeInScript(const QString& path);

} // namespace pagestack
