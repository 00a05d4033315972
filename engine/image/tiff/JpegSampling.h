#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>

namespace pagestack {

/// How many samples of brightness there are to one of colour, across and down, in JPEG data of
/// which these are the first bytes. None where they do not say so in the plain way: a frame of
/// three channels, of which the last two have one sample a block.
std::optional<std::pair<int, int>> jpegSampling(std::span<const std::uint8_t> start);

} // namespace pagestack
