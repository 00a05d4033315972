#include "engine/files/PosixFile.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace pagestack {

void throwFileSystemError(const char* what, int errorNumber)
{
    throw std::runtime_error(std::string(what) + ": "
                             + std::generic_category().message(errorNumber));
}

bool canOpenFiles(int count)
{
    if (count == 0)
        return true;
    const int file = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    const bool canOpenRest = canOpenFiles(count - 1);
    ::close(file);
    return canOpenRest;
}

namespace {

    bool saysAnyOf(const std::string& reason, std::initializer_list<int> errors)
    {
        return std::ranges::any_of(errors, [&](int error) {
            return reason.find(std::generic_category().message(error)) != std::string::npos;
        });
    }

    /// "memory" as a word, not as a part of a path.
    bool saysMemory(const std::string& reason)
    {
        constexpr std::string_view word = "memory";
        for (auto at = reason.find(word); at != std::string::npos; at = reason.find(word, at + 1)) {
            const auto end = at + word.size();
            const bool begins = at == 0 || reason[at - 1] == ' ';
            if (begins && (end == reason.size() || reason.find_first_of(" (:;,.", end) == end))
                return true;
        }
        return false;
    }

} // namespace

bool isWantOfRoom(const std::string& reason)
{
    // The texts are those of libtiff, libjpeg and the C++ library.
    return saysAnyOf(reason, { ENOSPC, EDQUOT, EMFILE, ENFILE, ENOMEM })
        || reason.find("No space for") != std::string::npos
        || reason.find("bad_alloc") != std::string::npos || saysMemory(reason);
}

bool isPassing(const std::string& reason)
{
    return isWantOfRoom(reason)
        || saysAnyOf(reason,
                     { EIO, EAGAIN, EBUSY, ETXTBSY, ESTALE, ETIMEDOUT, ENOTCONN, ENOLCK, EHOSTDOWN,
                       EHOSTUNREACH, ENETDOWN, ENETUNREACH, ECONNRESET });
}

int openUnnamedFile()
{
    QByteArray name = QFile::encodeName(QDir::tempPath()) + "/pagestack-XXXXXX";
    const int file = retryInterrupted([&] { return ::mkstemp(name.data()); });
    if (file < 0)
        throwFileSystemError("cannot create a temporary file", errno);
    ::unlink(name.constData());
    ::fcntl(file, F_SETFD, FD_CLOEXEC);
    return file;
}

std::size_t readUpTo(int file, std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = retryInterrupted([&] {
            return ::pread(file, bytes.data() + done, bytes.size() - done,
                           static_cast<off_t>(offset + done));
        });
        if (got < 0)
            throwFileSystemError("cannot read", errno);
        if (got == 0)
            break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

void readFully(int file, std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    if (readUpTo(file, offset, bytes) < bytes.size())
        throw std::runtime_error("cannot read: the file has become shorter");
}

void writeFully(int file, std::uint64_t offset, std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = retryInterrupted(
            [&] { return ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
        if (written < 0)
            throwFileSystemError("cannot write", errno);
        if (written == 0)
            throwFileSystemError("cannot write", ENOSPC);
        offset += static_cast<std::uint64_t>(written);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

void resizeFile(int file, std::uint64_t size)
{
    if (retryInterrupted([&] { return ::ftruncate(file, static_cast<off_t>(size)); }) != 0)
        throwFileSystemError("cannot write", errno);
}

void setModificationTime(int fileDescriptor, std::int64_t timeNs)
{
    constexpr std::int64_t second = 1'000'000'000;
    const std::int64_t rest = (timeNs % second + second) % second; // before 1970, too
    std::array<timespec, 2> times {};
    times[0].tv_nsec = UTIME_OMIT; // of the last access
    times[1].tv_sec = static_cast<time_t>((timeNs - rest) / second);
    times[1].tv_nsec = static_cast<long>(rest);
    if (::futimens(fileDescriptor, times.data()) != 0)
        throwFileSystemError("cannot keep the date", errno);
}

void syncToDisk(int file)
{
#ifdef F_FULLFSYNC // of macOS, whose fsync() leaves the bytes in the disk's own memory
    if (::fcntl(file, F_FULLFSYNC) == 0)
        return;
#endif
    if (retryInterrupted([&] { return ::fsync(file); }) != 0)
        throwFileSystemError("cannot write", errno);
}

void checkAtClose(int file)
{
    const int copy = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
    if (copy < 0)
        syncToDisk(file); // tells of the same faults, only later
    else if (::close(copy) != 0 && errno != EINTR) // interrupted, it is closed all the same
        throwFileSystemError("cannot write", errno);
}

} // namespace pagestack
