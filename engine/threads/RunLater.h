#pragma once

#include <functional>

namespace pagestack {

/// Has another thread do `work`, which throws nothing, before long and before the pages that wait.
/// False when there is no such thread; `work` is then not done.
using RunLater = std::function<bool(std::function<void()> work)>;

} // namespace pagestack
