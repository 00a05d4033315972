#include "engine/files/FileDigest.h"

#include "engine/files/ByteFile.h"
#include "engine/files/PosixFile.h"
#include "engine/threads/StopScope.h"

#include <QByteArray>
#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <fcntl.h>
#include <nettle/sha2.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace pagestack {

QString FileDigest::hex() const
{
    const QByteArray bytes(reinterpret_cast<const char*>(sha256.data()),
                           static_cast<qsizetype>(sha256.size()));
    return QString::fromLatin1(bytes.toHex());
}

FileDigest
digestOf(std::uint64_t size,
         const std::function<void(std::uint64_t offset, std::span<std::uint8_t> bytes)>& readAt)
{
    constexpr std::uint64_t most = std::uint64_t { 256 } * 1024;
    sha256_ctx context {};
    sha256_init(&context);
    std::vector<std::uint8_t> bytes;
    for (std::uint64_t done = 0; done < size; done += bytes.size()) {
        bytes.resize(std::min(most, size - done));
        readAt(done, bytes);
        sha256_update(&context, bytes.size(), bytes.data());
    }
    FileDigest digest { .sizeBytes = size };
    sha256_digest(&context, digest.sha256.size(), digest.sha256.data());
    return digest;
}

FileDigest digestOf(ByteFile& file)
{
    return digestOf(file.size(), [&](std::uint64_t offset, std::span<std::uint8_t> bytes) {
        file.readAt(offset, bytes);
    });
}

std::optional<FileDigest> digestOfFile(const QString& path)
try {
    // Without O_NONBLOCK a named pipe would wait for its writer.
    const int file = retryInterrupted([&] {
        return ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    });
    if (file < 0)
        return std::nullopt;
    const auto close = qScopeGuard([&] { ::close(file); });
    struct stat status = {};
    if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode))
        return std::nullopt;
    return digestOf(static_cast<std::uint64_t>(status.st_size),
                    [&](std::uint64_t offset, std::span<std::uint8_t> bytes) {
                        if (StopScope::isStopped())
                            throw std::runtime_error("stopped");
                        readFully(file, offset, bytes);
                    });
} catch (const std::runtime_error&) {
    return std::nullopt;
}

} // namespace pagestack
