#pragma once

#include <QString>

#include <cstdint>
#include <optional>

namespace pagestack {

/// How many threads can run at a time: the cores of the machine that the process may use, or fewer
/// where its control group (Linux, cgroups v2 or v1) has a share of their time. At least 1. Any
/// thread.
int usableCores();

/// How many bytes the control group of the process may take; none where there is no limit.
std::optional<std::uint64_t> memoryLimitBytes();

/// The same below another root than "/", for trials: with files `proc/self/cgroup` and
/// `sys/fs/cgroup/...`.
int usableCores(const QString& root, int cores);
std::optional<std::uint64_t> memoryLimitBytes(const QString& root);

/// Up to `cores`, as many pages as can be worked on at a time within `limit` bytes: 60 MB for the
/// first, 20 MB for each further one. At least 1.
int jobsWithin(int cores, std::optional<std::uint64_t> limit);

} // namespace pagestack
