#pragma once

#include <functional>

namespace pagestack {

class WorkerThread;

/// Runs `call` on the main thread (the one of the application object) and returns when it is done:
/// at once when this is the main thread already, else queued there while the caller waits. Calls
/// run in the order in which they were made. An exception of `call` is thrown to the caller.
/// Returns without running `call` when there is no application or it is shutting down, so that a
/// worker never waits for an event loop that has ended.
void callOnMainThread(const std::function<void()>& call);

/// Waits until `worker` has ended. Main thread only. Runs the calls that it or another worker makes
/// meanwhile with callOnMainThread, so the two never wait for each other; handles no other event.
/// Returns at once for a thread that is not running. Exceptions of a call go to its caller.
void joinWorker(WorkerThread& worker);

/// Makes callOnMainThread return without running from now on; waiting callers return too. For the
/// main thread after its event loop, when nothing is left that calls could act on; the application
/// object does it when it is destroyed.
void endMainThreadCalls();

} // namespace pagestack
