#pragma once

#include <QByteArray>

#include <cstdint>
#include <functional>

namespace pagestack {

/// Gives the file at `target`, which is no link, the first `size` bytes of the open file `from`.
/// For folders that take no new file: the content is overwritten. What was there is kept aside, and
/// put back when that fails; a program that is killed in the middle leaves the file torn. Throws
/// std::runtime_error with the reason. `lastLook` is called right before the file is touched, and
/// may throw.
void replaceContent(const QByteArray& target, int from, std::uint64_t size,
                    const std::function<void()>& lastLook);

} // namespace pagestack
