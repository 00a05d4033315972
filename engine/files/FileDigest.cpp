#include "engine/files/FileDigest.h"

#include "engine/files/ByteFile.h"

#include <QByteArray>

#include <algorithm>
#include <nettle/sha2.h>
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

} // namespace pagestack
