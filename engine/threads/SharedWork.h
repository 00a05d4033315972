#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

namespace pagestack {

/// Work of one thread in which others take part that would only wait for what comes of it. They
/// share its lock, so that a waiting thread is woken by work and by what it waits for alike.
class SharedWork
{
public:
    using Lock = std::unique_lock<std::mutex>;
    using Condition = std::function<bool()>;

    SharedWork() = default;
    SharedWork(const SharedWork&) = delete;
    SharedWork& operator=(const SharedWork&) = delete;
    ~SharedWork() = default;

    /// Does `work`, which shares out its parts itself and throws nothing; threads that help do the
    /// same beside. Returns when nobody is at it. Of one thread.
    void run(const std::function<void()>& work);

    /// Guards what conditions ask for.
    Lock lock() { return Lock(m_mutex); }
    /// To be called when some of that has changed.
    void notify() { m_changed.notify_all(); }

    /// Waits, with the lock open, until `isOver`.
    void wait(Lock& lock, const Condition& isOver) { m_changed.wait(lock, isOver); }
    /// The same, and takes part in the work meanwhile. `isOver` is asked again when there is no
    /// more of it to be had.
    void helpUntil(Lock& lock, const Condition& isOver);

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    const std::function<void()>* m_work = nullptr; ///< null: there is nothing left to take part in
    int m_helpers = 0; ///< that are at it
};

} // namespace pagestack
