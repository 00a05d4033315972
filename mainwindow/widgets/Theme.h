#pragma once

#include <QPalette>

namespace pagestack {

enum class Theme {
    System,
    Light,
    Dark,
};

/// The colours of `theme`: texts have a contrast of 4.5 to 1 at least, those of what is disabled of
/// 2.5. System: no colours at all.
QPalette paletteOf(Theme theme);

/// Gives all windows these colours; System: those that the desktop asks for.
void showTheme(Theme theme);

} // namespace pagestack
