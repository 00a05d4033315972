#include "engine/files/FreeName.h"

#include "engine/files/PosixFile.h"

#include <cstdio>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace pagestack {

namespace {

    /// In one step; ENOSYS where the system has none.
    int renameInOneStep(const char* from, const char* to)
    {
#if defined(RENAME_NOREPLACE)
        return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
#elif defined(RENAME_EXCL) // macOS
        return ::renamex_np(from, to, RENAME_EXCL);
#else
        static_cast<void>(from);
        static_cast<void>(to);
        errno = ENOSYS;
        return -1;
#endif
    }

    /// The same for two files that change their names.
    int swapInOneStep(const char* one, const char* other)
    {
#if defined(RENAME_EXCHANGE)
        return ::renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE);
#elif defined(RENAME_SWAP) // macOS
        return ::renamex_np(one, other, RENAME_SWAP);
#else
        static_cast<void>(one);
        static_cast<void>(other);
        errno = ENOSYS;
        return -1;
#endif
    }

    /// By a second name. Should the first stay, it is that of a leftover.
    int linkAndUnlink(const char* from, const char* to)
    {
        if (::link(from, to) != 0)
            return -1;
        ::unlink(from);
        return 0;
    }

    int lookAndRename(const char* from, const char* to)
    {
        struct stat status = {};
        if (::lstat(to, &status) == 0) {
            errno = EEXIST;
            return -1;
        }
        return ::rename(from, to);
    }

    /// Whether the error says that the file system has no such call.
    bool isUnknownCall(int error)
    {
        constexpr std::array unknown { ENOSYS, EINVAL, EPERM, ENOTSUP, EOPNOTSUPP, EMLINK };
        return std::find(unknown.begin(), unknown.end(), error) != unknown.end();
    }

} // namespace

bool swapNames(const QByteArray& one, const QByteArray& other)
{
    const auto swap = [&] { return swapInOneStep(one.constData(), other.constData()); };
    if (retryInterrupted(swap) == 0)
        return true;
    if (!isUnknownCall(errno) && errno != ENOENT)
        throwFileSystemError("cannot put the file in place", errno);
    return false;
}

bool takeFreeName(const QByteArray& from, const QByteArray& to)
{
    for (const auto attempt : { renameInOneStep, linkAndUnlink, lookAndRename }) {
        if (retryInterrupted([&] { return attempt(from.constData(), to.constData()); }) == 0)
            return true;
        if (errno == EEXIST)
            return false;
        if (!isUnknownCall(errno))
            break;
    }
    throwFileSystemError("cannot put the file in place", errno);
}

} // namespace pagestack
