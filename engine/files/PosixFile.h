#pragma once

#include <cerrno>
#include <cstdint>
#include <span>
#include <string>

namespace pagestack {

/// Throws std::runtime_error with the reason "WHAT: text of the error number", for example
/// "cannot write: No space left on device".
[[noreturn]] void throwFileSystemError(const char* what, int errorNumber);

/// Whether `reason`, of this program or of a codec, says that the disk or the memory was full or
/// that too many files were open.
bool isWantOfRoom(const std::string& reason);

/// Whether `reason` says so, or that the disk, the network or another program stood in the way:
/// what may be gone the next time.
bool isPassing(const std::string& reason);

/// Repeats a system call while a signal interrupts it. Not for close(), which is done even then.
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

/// Opens a new file without a name for reading and writing; it is removed when the caller closes
/// the descriptor. Throws std::runtime_error.
int openUnnamedFile();

/// Fills `bytes` from `offset` of the open file on; returns how many there were, fewer only at the
/// end of the file. Throws std::runtime_error. Any thread; the position of the descriptor is not
/// used.
std::size_t readUpTo(int fileDescriptor, std::uint64_t offset, std::span<std::uint8_t> bytes);

/// The same for all of `bytes`: throws at the end of the file.
void readFully(int fileDescriptor, std::uint64_t offset, std::span<std::uint8_t> bytes);

/// Writes all of `bytes` at `offset`. Throws std::runtime_error. Any thread, as above.
void writeFully(int fileDescriptor, std::uint64_t offset, std::span<const std::uint8_t> bytes);

/// Cuts or extends the file to `size` bytes. Throws std::runtime_error.
void resizeFile(int fileDescriptor, std::uint64_t size);

/// Sets the modification time, in nanoseconds since 1970. Throws std::runtime_error.
void setModificationTime(int fileDescriptor, std::int64_t timeNs);

/// Waits until all that was written is on the disk. Throws std::runtime_error.
void syncToDisk(int fileDescriptor);

/// Throws std::runtime_error with the error that closing the file would report, such as a full
/// disk, which some file systems report only then. The descriptor stays open.
void checkAtClose(int fileDescriptor);

} // namespace pagestack
