#pragma once

#include <QString>

namespace pagestack {

/// Order of names in which runs of digits count as numbers: scan2.tif before scan10.tif. The same
/// in every locale; names that differ never count as equal.
bool naturallyLess(const QString& a, const QString& b);

} // namespace pagestack
