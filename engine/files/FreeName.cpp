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

#if defined(RENAME_NOREPLACE)
    constexpr unsigned noReplace = RENAME_NOREPLACE;
    constexpr unsigned exchange = RENAME_EXCHANGE;
#elif defined(RENAME_EXCL) // macOS
    constexpr unsigned noReplace = RENAME_EXCL;
    constexpr unsigned exchange = RENAME_SWAP;
#else
    constexpr unsigned noReplace = 0;
    constexpr unsigned exchange = 0;
#endif

    /// ENOSYS where the system has no such call.
    int renameInOneStep(const char* from, const char* to, unsigned how)
    {
#if defined(RENAME_NOREPLACE)
        return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, how);
#elif defined(RENAME_EXCL)
        return ::renamex_np(from, to, how);
#else
        static_cast<void>(from);
        static_cast<void>(to);
        static_cast<void>(how);
        errno = ENOSYS;
        return -1;
#endif
    }

    int renameKeeping(const char* from, const char* to)
    {
        return renameInOneStep(from, to, noReplace);
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

} // namespace

bool isUnknownCall(int error)
{
    constexpr std::array unknown { ENOSYS, EINVAL, EPERM, ENOTSUP, EOPNOTSUPP, EMLINK };
    return std::find(unknown.begin(), unknown.end(), error) != unknown.end();
}

int renameToFreeName(const QByteArray& from, const QByteArray& to)
{
    for (const auto attempt : { renameKeeping, linkAndUnlink, lookAndRename }) {
        if (retryInterrupted([&] { return attempt(from.constData(), to.constData()); }) == 0)
            return 0;
        if (!isUnknownCall(errno))
            break;
    }
    return errno;
}

int exchangeNames(const QByteArray& one, const QByteArray& other)
{
    const auto swap = [&] { return renameInOneStep(one.constData(), other.constData(), exchange); };
    return retryInterrupted(swap) == 0 ? 0 : errno;
}

} // namespace pagestack
