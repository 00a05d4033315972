#pragma once

#include <cstdint>
#include <span>
#include <vector>

struct tiff;

namespace pagestack {

struct TiffPageTags;

/// Decodes tile `index` of the current page of `handle`, which `tags` describe, to the whole of
/// `to`. False when it cannot be decoded to its end, which is not noticed for fax tiles of several
/// samples; the reason is with the handle's messages, if there is one. `scratch` grows to the size
/// of a fax tile.
bool readTile(tiff* handle, const TiffPageTags& tags, std::uint32_t index,
              std::span<std::uint8_t> to, std::vector<std::uint8_t>& scratch);

} // namespace pagestack
