#include "engine/files/InPlace.h"

#include "engine/files/PosixFile.h"

#include <QScopeGuard>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::uint64_t bufferBytes = std::uint64_t { 256 } * 1024;

    void copyBytes(int from, int to, std::uint64_t offset, std::uint64_t end)
    {
        std::vector<std::uint8_t> buffer;
        for (; offset < end; offset += buffer.size()) {
            buffer.resize(std::min(bufferBytes, end - offset));
            readFully(from, offset, buffer);
            writeFully(to, offset, buffer);
        }
    }

    void cut(int file, std::uint64_t size)
    {
        if (retryInterrupted([&] { return ::ftruncate(file, static_cast<off_t>(size)); }) != 0)
            throwFileSystemError("cannot write", errno);
    }

    std::uint64_t sizeOf(int file)
    {
        struct stat status = {};
        if (::fstat(file, &status) != 0)
            throwFileSystemError("cannot read", errno);
        return static_cast<std::uint64_t>(status.st_size);
    }

} // namespace

void replaceContent(const QByteArray& target, int from, std::uint64_t size,
                    const std::function<void()>& lastLook)
{
    const int to = retryInterrupted(
        [&] { return ::open(target.constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC); });
    if (to < 0)
        throwFileSystemError("cannot open the file to replace", errno);
    const auto closeTarget = qScopeGuard([to] { ::close(to); });
    const int old = openUnnamedFile();
    const auto closeOld = qScopeGuard([old] { ::close(old); });
    const std::uint64_t oldSize = sizeOf(to);
    copyBytes(to, old, 0, oldSize);
    lastLook();
    bool isTouched = false;
    try {
        // What it grows by comes first: a disk without room for it is noticed in time.
        copyBytes(from, to, oldSize, size);
        isTouched = true;
        copyBytes(from, to, 0, std::min(oldSize, size));
        cut(to, size);
        syncToDisk(to);
        checkAtClose(to);
    } catch (const std::exception& error) {
        try {
            copyBytes(old, to, 0, isTouched ? oldSize : 0);
            cut(to, oldSize);
            syncToDisk(to);
            checkAtClose(to);
        } catch (const std::exception&) {
            throw std::runtime_error(
                error.what()
                + std::string("; what was there is damaged, since it could not "
                              "be put back"));
        }
        throw;
    }
}

} // namespace pagestack
