#pragma once

#include <QString>

namespace pagestack {

/// The application's display name, directly followed by `suffix`; a null suffix adds nothing. It
/// titles the main window and every message box.
QString getAppTitle(const QString& suffix);

/// The application data folder, which holds the logs; "" when the platform names no folder for the
/// user's application data (paths built on it are then relative). Creates nothing.
QString getAppPath();

/// Creates the folder `folderName` of the application data folder, with its parents, if it is
/// missing; an empty name is the data folder itself. Returns false if that fails, for instance
/// because a plain file is in the way; `error`, which may be null, then gets the reason and is left
/// alone otherwise.
bool createApplicationUsersFolder(const QString& folderName, QString* error);

/// Full path of the program's resource file `name`.`type`, or of `name` alone when `type` is empty;
/// a null string when there is none. Searches beside the installed program, in its bundle and, for
/// a program in its build folder, among the sources. Needs the application object.
QString pathForResource(const QString& name, const QString& type);

} // namespace pagestack
