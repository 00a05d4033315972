#include "engine/support/AppTitle.h"

#include "engine/support/Info.h"

namespace pagestack {

QString getAppTitle(const QString& suffix) { return displayName.toString() + suffix; }

} // namespace pagestack
