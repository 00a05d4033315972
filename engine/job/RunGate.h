#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace pagestack {

/// Holds a run up between two pages, and ends it between two sources. Any thread.
class RunGate
{
public:
    /// The page in hand is finished first.
    void setPaused(bool isPaused)
    {
        const std::scoped_lock lock(m_mutex);
        m_isPaused = isPaused;
        m_changed.notify_all();
    }

    /// The run is to end, as cancelled, when the source in hand is done.
    void endAfterSource() { m_endsAfterSource = true; }
    bool endsAfterSource() const { return m_endsAfterSource; }

    /// As at first. While nobody waits.
    void reset()
    {
        setPaused(false);
        m_endsAfterSource = false;
    }

    /// Returns when the run is not paused, or is no longer `isRunning`, which is asked again after
    /// each `wake`.
    void wait(const std::function<bool()>& isRunning)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_isPaused || !isRunning(); });
    }
    void wake()
    {
        const std::scoped_lock lock(m_mutex);
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex; ///< guards `m_isPaused`
    std::condition_variable m_changed;
    bool m_isPaused = false;
    std::atomic<bool> m_endsAfterSource = false;
};

} // namespace pagestack
