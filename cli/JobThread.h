#pragma once

#include <functional>

namespace pagestack {

struct Options;

/// The pages that a job may work on at the same time, as Process::setJobs() takes them.
int askedJobs(const Options& options);

/// Does `work`, which may not throw, on a thread of its own, with an event loop on this one until
/// it is done. False, at once and with nothing done, when the system has no thread for it.
bool runOnThread(const std::function<void()>& work);

} // namespace pagestack
