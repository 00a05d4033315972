#pragma once

#include "engine/threads/StopScope.h"

#include <stdexcept>
#include <string>

namespace pagestack {

/// A file is not what was to be written.
class RefusedFile : public std::runtime_error
{
public:
    explicit RefusedFile(const std::string& reason)
        : std::runtime_error("read back, the file is refused: " + reason)
    {
    }
};

/// Runs `look`, which reads a complete file before it gets its name. Throws RefusedFile, with what
/// that throws as the reason. A stop waits for it: pages that are not
/// looked at any more would be a fault of the file.
template <typename Look>
void readBack(Look look)
try {
    const StopScope whole([] { return false; });
    look();
} catch (const std::runtime_error& error) {
    throw RefusedFile(error.what());
}

} // namespace pagestack
