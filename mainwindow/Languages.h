#pragma once

namespace pagestack {

/// Lets the window speak the language of the system, where it has the texts, and English elsewhere.
/// To be called once, after the application was made and before any text is shown.
void installTranslations();

} // namespace pagestack
