#include "engine/image/FileBytes.h"

#include <cerrno>
#include <stdexcept>
#include <string>
#include <system_error>
#include <unistd.h>

namespace pagestack {

void throwFileSystemError(const char* what, int errorNumber)
{
    throw std::runtime_error(std::string(what) + ": "
                             + std::generic_category().message(errorNumber));
}

void readFully(int file, std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t got = ::pread(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            throwFileSystemError("cannot read", errno);
        if (got == 0)
            throw std::runtime_error("cannot read: the file has become shorter");
        offset += static_cast<std::uint64_t>(got);
        bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
}

void writeFully(int file, std::uint64_t offset, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written
            = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            throwFileSystemError("cannot write", errno);
        if (written == 0)
            throwFileSystemError("cannot write", ENOSPC);
        offset += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

} // namespace pagestack
