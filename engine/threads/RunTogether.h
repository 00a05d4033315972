#pragma once

#include <functional>

namespace pagestack {

/// Has up to `mostThreads` threads do the same `work` side by side, at least one, and returns when
/// they have done it. It shares out its parts itself, and throws nothing.
using RunTogether = std::function<void(int mostThreads, const std::function<void()>& work)>;

} // namespace pagestack
