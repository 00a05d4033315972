#pragma once

#include <functional>

class QThread;

namespace pagestack {

/// Runs `call` on the main thread (the one of the application object) and returns when it is done:
/// at once when this is the main thread already, else queued there while the caller waits. Calls of
/// one thread, and of several, run in the order in which they were made. An exception that leaves
/// `call` is carried back to the caller. Returns without running `call` when there is no
/// application or it is shutting down, so that a worker never waits for an event loop that has
/// ended.
void callOnMainThread(const std::function<void()>& call);

/// Waits until `worker` has ended. Main thread only. Calls that it or another worker makes
/// meanwhile with callOnMainThread are run here, so the two never wait for each other; no other
/// event is handled. Returns at once for a thread that is not running. What a call throws goes to
/// its caller, never out of here.
void joinWorker(QThread& worker);

/// From now on callOnMainThread returns without running, and callers that are waiting return. To be
/// called on the main thread after its event loop has ended, when nothing is left that calls could
/// act on; the application object does it when it is destroyed.
void endMainThreadCalls();

} // namespace pagestack
