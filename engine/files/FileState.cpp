#include "engine/files/FileState.h"

#include <sys/stat.h>

namespace pagestack {

namespace {

    std::int64_t nanoseconds(const timespec& time)
    {
        return std::int64_t { time.tv_sec } * 1'000'000'000 + time.tv_nsec;
    }

} // namespace

FileState::FileState(const struct stat& status)
    : identity { static_cast<std::uint64_t>(status.st_dev),
                 static_cast<std::uint64_t>(status.st_ino) }
    , sizeBytes(status.st_size)
#ifdef __APPLE__
    , modifiedNs(nanoseconds(status.st_mtimespec))
    , changedNs(nanoseconds(status.st_ctimespec))
#else
    , modifiedNs(nanoseconds(status.st_mtim))
    , changedNs(nanoseconds(status.st_ctim))
#endif
{
}

std::optional<FileState> fileState(const QByteArray& path)
{
    struct stat status = {};
    if (::stat(path.constData(), &status) != 0)
        return std::nullopt;
    return FileState(status);
}

std::optional<FileIdentity> fileIdentity(const QByteArray& path)
{
    const std::optional<FileState> state = fileState(path);
    return state ? std::optional(state->identity) : std::nullopt;
}

} // namespace pagestack
