#include "engine/files/AccessList.h"

#ifdef __linux__

#include <cerrno>
#include <sys/xattr.h>

namespace pagestack {

namespace {

    constexpr char listName[] = "system.posix_acl_access";

    /// Whether the error says that there is no list, or that the file system has none.
    bool isNone(int error) { return error == ENODATA || error == ENOTSUP || error == ENOSYS; }

} // namespace

bool keepAccessList(const QByteArray& path, int fileDescriptor)
{
    QByteArray list(65536, Qt::Uninitialized); // no attribute is longer
    const ssize_t size = ::getxattr(path.constData(), listName, list.data(),
                                    static_cast<std::size_t>(list.size()));
    if (size > 0)
        return ::fsetxattr(fileDescriptor, listName, list.constData(),
                           static_cast<std::size_t>(size), 0)
            == 0;
    if (size < 0 && !isNone(errno))
        return false;
    return ::fremovexattr(fileDescriptor, listName) == 0 || isNone(errno);
}

} // namespace pagestack

#else

namespace pagestack {

bool keepAccessList(const QByteArray&, int) { return true; }

} // namespace pagestack

#endif
