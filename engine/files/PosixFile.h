#pragma once

#include <cerrno>
#include <cstdint>
#include <span>
#include <string>

namespace pagestack {

/// Throws std::runtime_error with the reason "WHAT: text of the error number", for example
/// "cannot write: No space left on device".
[[noreturn]] void throwFileSystemError(const char* what, int errorNumber);

/// Whether `reason`, of this program or of a codec, says that there was no room: on the disk, in
/// memory or for one more open file.
bool isWantOfRoom(const std::string& reason);

/// Makes a system call again while a signal interrupts it. Not for close(), which is done all the
/// same.
template <typename Call>
auto retryInterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Whether the system lets this process open `count` files more.
bool canOpenFiles(int count);

/// Opens a new file for reading and writing that has no name and so goes with its descriptor, which
/// is the caller's. Throws std::runtime_error.
int openUnnamedFile();

/// Fills all of `bytes` from `offset` of the open file on. Throws std::runtime_error, also at the
/// end of the file. Any thread; the position of the descriptor is not used.
void readFully(int fileDescriptor, std::uint64_t offset, std::span<std::uint8_t> bytes);

/// Writes all of `bytes` at `offset`. Throws std::runtime_error. Any thread, as above.
void writeFully(int fileDescriptor, std::uint64_t offset, std::span<const std::uint8_t> bytes);

/// Waits until what was written is on the disk. Throws std::runtime_error.
void syncToDisk(int fileDescriptor);

/// Throws std::runtime_error with what closing the file would complain of, such as the full disk
/// that some file systems report only then. The descriptor stays open.
void checkAtClose(int fileDescriptor);

} // namespace pagestack
