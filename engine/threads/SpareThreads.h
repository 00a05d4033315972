#pragma once

#include <atomic>
#include <memory>

namespace pagestack {

/// One of the threads of a SpareThreads, as long as it lives; or none.
class ThreadClaim
{
public:
    ThreadClaim() = default;

    explicit operator bool() const { return m_spare != nullptr; }
    void giveBack() { m_spare.reset(); }

private:
    friend class SpareThreads;

    struct GiveBack
    {
        void operator()(std::atomic<int>* spare) const { ++*spare; }
    };

    explicit ThreadClaim(std::atomic<int>& spare)
        : m_spare(&spare)
    {
    }

    std::unique_ptr<std::atomic<int>, GiveBack> m_spare;
};

/// Counts the threads that a run may keep busy besides. Work on a page holds one; work on a large
/// page can get others that would be idle. Never waits. Any thread; outlives all claims.
class SpareThreads
{
public:
    explicit SpareThreads(int total)
        : m_spare(total)
    {
    }
    SpareThreads(const SpareThreads&) = delete;
    SpareThreads& operator=(const SpareThreads&) = delete;
    ~SpareThreads() = default;

    /// For work that is done in any case, whether a thread is spare or not.
    ThreadClaim take()
    {
        --m_spare;
        return ThreadClaim(m_spare);
    }

    /// For help that can be done without; no claim when no thread is spare.
    ThreadClaim tryTake()
    {
        int spare = m_spare;
        while (spare > 0)
            if (m_spare.compare_exchange_weak(spare, spare - 1))
                return ThreadClaim(m_spare);
        return {};
    }

private:
    std::atomic<int> m_spare; ///< below 0 when work began that could not wait for the help to end
};

} // namespace pagestack
