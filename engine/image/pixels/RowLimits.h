#pragma once

#include <cstdint>

namespace pagestack {

// The steps from the file to an output each hold a row or more, PNG some dozen of them.
constexpr std::uint32_t longestRowPx = 16 * 1024 * 1024;
constexpr std::uint64_t longestRowBytes = std::uint64_t { 16 } * 1024 * 1024;

} // namespace pagestack
