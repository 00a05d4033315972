#pragma once

#include <QStringList>

namespace pagestack {

/// The libraries that read and write images with their versions, such as "libtiff 4.5.0".
QStringList codecVersions();

} // namespace pagestack
