#pragma once

#include <atomic>
#include <utility>

namespace pagestack {

class SpareThreads;

/// One of the threads of a SpareThreads, as long as it lives; or none.
class ThreadClaim
{
public:
    ThreadClaim() = default;
    ThreadClaim(const ThreadClaim&) = delete;
    ThreadClaim& operator=(const ThreadClaim&) = delete;
    ThreadClaim(ThreadClaim&& other) noexcept
        : m_from(std::exchange(other.m_from, nullptr))
    {
    }
    ThreadClaim& operator=(ThreadClaim&& other) noexcept
    {
        std::swap(m_from, other.m_from);
        return *this;
    }
    ~ThreadClaim();

    explicit operator bool() const { return m_from != nullptr; }
    void giveBack() { *this = ThreadClaim(); }

private:
    friend class SpareThreads;

    explicit ThreadClaim(SpareThreads& from)
        : m_from(&from)
    {
    }

    SpareThreads* m_from = nullptr;
};

/// How many more threads a run may keep busy. Whoever works on a page holds one; who has a large
/// page in hand can get others that would be idle. It only counts, and never waits. Any thread; it
/// outlives all claims.
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
    ThreadClaim take();

    /// For help that can be done without; no claim when no thread is spare.
    ThreadClaim tryTake();

private:
    friend class ThreadClaim;

    std::atomic<int> m_spare; ///< below 0 when work began that could not wait for the help to end
};

} // namespace pagestack
