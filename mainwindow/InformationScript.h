#pragma once

#include <QString>

namespace pagestack {

/// The text of the script that opens the file manager's information window for the file at `path`,
/// an absolute path with '/' between its names. Four lines without a line feed after the last. The
/// file is named by its folders, the innermost first, on the startup disk. Names stand in the text
/// as they are: one with a double quote makes a script that does not compile. Any thread.
QString informationScript(const QString& path);

} // namespace pagestack
