#include "engine/image/formats/png/SectionPipeline.h"

#include <system_error>
#include <utility>

namespace pagestack {

namespace {

    // Each takes the memory of three sections. More of them would wait for the pixels to be read.
    constexpr std::size_t mostHelpers = 2;

} // namespace

SectionPipeline::SectionPipeline(SpareThreads* threads)
    : m_threads(threads)
{
}

SectionPipeline::~SectionPipeline()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isClosing = true;
    }
    m_hasWork.notify_all();
    for (std::thread& helper : m_helpers)
        helper.join();
}

std::future<void> SectionPipeline::add(std::function<void()> task, bool isAlone)
{
    std::packaged_task<void()> packaged(std::move(task));
    std::future<void> done = packaged.get_future();
    {
        const std::scoped_lock lock(m_mutex);
        m_waiting.push_back(std::move(packaged));
    }
    if (m_threads != nullptr && m_helpers.size() < mostHelpers && !(isAlone && m_helpers.empty()))
        addHelper();
    m_hasWork.notify_one();
    return done;
}

void SectionPipeline::addHelper()
{
    ThreadClaim claim = m_threads->tryTake();
    if (!claim)
        return;
    try {
        m_helpers.emplace_back([this, own = std::move(claim)] { help(); });
    } catch (const std::system_error&) {
        m_threads = nullptr; // The system has no thread left.
    }
}

bool SectionPipeline::runNext()
{
    std::packaged_task<void()> task;
    {
        const std::scoped_lock lock(m_mutex);
        if (m_waiting.empty())
            return false;
        task = std::move(m_waiting.front());
        m_waiting.pop_front();
    }
    task();
    return true;
}

void SectionPipeline::help()
{
    const auto waitForWork = [this] {
        std::unique_lock lock(m_mutex);
        m_hasWork.wait(lock, [this] { return m_isClosing || !m_waiting.empty(); });
        return !m_isClosing;
    };
    while (waitForWork())
        runNext();
}

} // namespace pagestack
