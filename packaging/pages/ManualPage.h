#pragma once

#include <QString>

namespace pagestack {

/// The manual page of the command line, in the macros of man(7), with the options that it parses.
QString manualPage();

} // namespace pagestack
