#pragma once

#include <cstdint>
#include <span>

struct tiff;

namespace pagestack {

struct TiffPageTags;

/// Decodes tile `index` of the current page of `handle`, which `tags` describe, to the whole of
/// `to`. False when it cannot be decoded to its end; the reason is with the handle's messages, if
/// there is one.
bool readTile(tiff* handle, const TiffPageTags& tags, std::uint32_t index,
              std::span<std::uint8_t> to);

} // namespace pagestack
