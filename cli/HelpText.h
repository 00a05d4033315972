#pragma once

#include <QString>

namespace pagestack {

/// The help, examples first; lines of up to 80 signs.
QString helpText();

/// Name and version of the program, then one line a library.
QString versionText();

} // namespace pagestack
