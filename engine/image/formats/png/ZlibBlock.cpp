#include "engine/image/formats/png/ZlibBlock.h"

#include <libdeflate.h>

#include <memory>
#include <new>

namespace pagestack {

QByteArray zlibBlock(const QByteArray& bytes)
{
    constexpr int level = 6;
    const std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)> codec(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    if (codec == nullptr)
        throw std::bad_alloc();
    const auto size = static_cast<std::size_t>(bytes.size());
    QByteArray block(static_cast<qsizetype>(libdeflate_zlib_compress_bound(codec.get(), size)),
                     Qt::Uninitialized);
    block.resize(static_cast<qsizetype>(
        libdeflate_zlib_compress(codec.get(), bytes.constData(), size, block.data(),
                                 static_cast<std::size_t>(block.size()))));
    return block;
}

} // namespace pagestack
