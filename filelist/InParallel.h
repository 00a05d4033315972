#pragma once

#include <QThread>

#include <algorithm>
#include <future>
#include <vector>

namespace pagestack {

/// Calls `work(part, first, end)` for the parts of 0..count, one a processor, each on a thread of
/// its own, and waits for all of them. Throws what a call throws. A part has 1000 at least; there
/// are partsOf(count) parts.
inline int partsOf(int count)
{
    return std::clamp(count / 1000, 1, std::max(1, QThread::idealThreadCount()));
}

template <typename Work>
void inParallel(int count, Work work)
{
    const int parts = partsOf(count);
    const auto start = [&](int part) { return static_cast<int>(qint64 { count } * part / parts); };
    std::vector<std::future<void>> others;
    for (int part = 1; part < parts; ++part)
        others.push_back(std::async(std::launch::async, work, part, start(part), start(part + 1)));
    work(0, 0, start(1));
    for (std::future<void>& other : others)
        other.get();
}

} // namespace pagestack
