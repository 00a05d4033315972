#pragma once

#include "engine/threads/SpareThreads.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

namespace pagestack {

/// Tasks that spare threads begin in their order. Its operations belong to one thread.
class SectionPipeline
{
public:
    /// `threads`, null when there are none to be had, outlives the pipeline.
    explicit SectionPipeline(SpareThreads* threads);

    /// Waits for the tasks in work and drops the others.
    ~SectionPipeline();
    SectionPipeline(const SectionPipeline&) = delete;
    SectionPipeline& operator=(const SectionPipeline&) = delete;

    /// Adds a task. The future becomes ready when it is done, with what it threw. No thread is
    /// claimed for a task that comes alone.
    std::future<void> add(std::function<void()> task, bool isAlone);

    /// Runs the first of the tasks that wait on this thread; false when none does.
    bool runNext();

    /// Threads that help.
    std::size_t helpers() const { return m_helpers.size(); }

private:
    void addHelper();
    void help();

    SpareThreads* m_threads;
    std::vector<std::thread> m_helpers;

    std::mutex m_mutex; ///< guards the fields below
    std::condition_variable m_hasWork;
    std::deque<std::packaged_task<void()>> m_waiting;
    bool m_isClosing = false;
};

} // namespace pagestack
