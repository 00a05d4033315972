#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace pagestack {

/// Does work on threads of its own and gives the results back in the order in which the work was
/// added. Used by one thread.
template <typename Result>
class WorkQueue
{
public:
    /// Works with fewer threads if the system has no more; throws std::system_error if it has none.
    explicit WorkQueue(int threads)
    {
        try {
            while (static_cast<int>(m_threads.size()) < threads)
                m_threads.emplace_back([this] { work(); });
        } catch (const std::system_error&) {
            if (m_threads.empty())
                throw;
        }
    }
    /// Waits for the work in hand, forgets the rest.
    ~WorkQueue()
    {
        {
            const std::lock_guard lock(m_guard);
            m_isOver = true;
        }
        m_added.notify_all();
        for (std::thread& thread : m_threads)
            thread.join();
    }
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;

    void add(std::function<Result()> work)
    {
        std::packaged_task<Result()> task(std::move(work));
        m_results.push_back(task.get_future());
        {
            const std::lock_guard lock(m_guard);
            m_tasks.push_back(std::move(task));
        }
        m_added.notify_one();
    }

    /// Results that were not taken yet.
    std::size_t pending() const { return m_results.size(); }

    /// Whether take() would return at once.
    bool isReady() const
    {
        return !m_results.empty()
            && m_results.front().wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }

    /// Waits for the first pending result, of which there is one; throws what the work threw.
    Result take()
    {
        std::future<Result> result = std::move(m_results.front());
        m_results.pop_front();
        return result.get();
    }

private:
    void work()
    {
        std::unique_lock lock(m_guard);
        while (true) {
            m_added.wait(lock, [this] { return m_isOver || !m_tasks.empty(); });
            if (m_isOver)
                return;
            std::packaged_task<Result()> task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    std::deque<std::future<Result>> m_results;
    std::mutex m_guard; ///< protects the two below
    std::deque<std::packaged_task<Result()>> m_tasks;
    bool m_isOver = false;
    std::condition_variable m_added; ///< there is something to do, or all is over
    std::vector<std::thread> m_threads;
};

} // namespace pagestack
