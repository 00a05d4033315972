#pragma once

#include <QString>

namespace pagestack {

/// The application's display name, directly followed by `suffix`; a null suffix adds nothing.
/// It titles the main window and every message box.
QString getAppTitle(const QString& suffix);

} // namespace pagestack
