#pragma once

#include <QString>

namespace pagestack {

/// Full path of the program's resource file `name`.`type`, or of `name` alone when `type` is empty;
/// a null string when there is none. Looked for beside the installed program, in its bundle and,
/// for a program that lies in its build folder, among the sources. Needs the application object.
QString pathForResource(const QString& name, const QString& type);

} // namespace pagestack
