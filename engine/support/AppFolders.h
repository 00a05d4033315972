#pragma once

#include <QString>

namespace pagestack {

/// The application data folder, where the program keeps its logs; "" when the platform names no
/// folder for the user's application data (paths built on it are then relative). Creates nothing.
QString getAppPath();

/// Makes sure that the folder `folderName` of the application data folder exists; an empty name is
/// the data folder itself. Missing parent folders are made too. False when it could not be made,
/// for instance because a plain file is in the way; `error`, which may be null, then gets the
/// reason and is left alone otherwise.
bool createApplicationUsersFolder(const QString& folderName, QString* error);

} // namespace pagestack
