#pragma once

#include <QString>

namespace pagestack {

/// Completes the words of the command line in a shell: "bash", "zsh" or "fish". Empty for another
/// one.
QString completionScript(const QString& shell);

} // namespace pagestack
