#pragma once

#include <QJsonObject>
#include <QString>

namespace pagestack {

/// The texts of the INI file at `path`; those of a section other than "General" form an object
/// under its name. Values in the notation for lists and objects are left out, and so is every line
/// that is neither a section nor a value. Empty when there is no such file.
QJsonObject readIniValues(const QString& path);

} // namespace pagestack
