#pragma once

#include <stdexcept>
#include <string>

namespace pagestack {

/// Runs `look`, which reads a complete file before it gets its name. Throws std::runtime_error,
/// with what that throws as the reason to refuse the file.
template <typename Look>
void readBack(Look look)
try {
    look();
} catch (const std::runtime_error& error) {
    throw std::runtime_error(std::string("read back, the file is refused: ") + error.what());
}

} // namespace pagestack
