#include "engine/image/FileSystemError.h"

#include <stdexcept>
#include <string>
#include <system_error>

namespace pagestack {

void throwFileSystemError(const char* what, int errorNumber)
{
    throw std::runtime_error(std::string(what) + ": "
                             + std::generic_category().message(errorNumber));
}

} // namespace pagestack
