#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

/// Throws std::runtime_error with the reason "WHAT: text of the error number", for example
/// "cannot write: No space left on device".
[[noreturn]] void throwFileSystemError(const char* what, int errorNumber);

/// Fills all of `bytes` from `offset` of the open file on. Throws std::runtime_error, also at the
/// end of the file. Any thread; the position of the descriptor is not used.
void readFully(int fileDescriptor, std::uint64_t offset, std::span<std::uint8_t> bytes);

/// Writes all of `bytes` at `offset`. Throws std::runtime_error. Any thread, as above.
void writeFully(int fileDescriptor, std::uint64_t offset, std::span<const std::uint8_t> bytes);

} // namespace pagestack
