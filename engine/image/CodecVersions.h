#pragma once

#include <QStringList>

namespace pagestack {

/// The libraries that read and write images, each with the version in use, for example
/// "libtiff 4.5.0".
QStringList codecVersions();

} // namespace pagestack
