#pragma once

namespace pagestack {

/// Throws std::runtime_error with the reason "WHAT: text of the error number", for example
/// "cannot write: No space left on device".
[[noreturn]] void throwFileSystemError(const char* what, int errorNumber);

} // namespace pagestack
