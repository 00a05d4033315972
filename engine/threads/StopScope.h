#pragma once

#include <functional>

namespace pagestack {

/// While it exists, lengthy work on its thread can be stopped. One within another takes its place
/// until it ends, which is on the thread that made it.
class StopScope
{
public:
    /// What a stop ends at once. A run finishes the page in hand.
    enum class Reach { LookUps, PagesToo };

    /// `isStopped` is asked often.
    explicit StopScope(std::function<bool()> isStopped, Reach reach = Reach::LookUps);
    ~StopScope();
    StopScope(const StopScope&) = delete;
    StopScope& operator=(const StopScope&) = delete;

    /// Whether the look-up under way on this thread should end. False where there is no scope.
    static bool isStopped();

    /// Whether the page in hand is not wanted any more.
    static bool isPageStopped();
    /// Throws std::runtime_error then. Asked between the pieces of a page.
    static void leavePageIfStopped();

private:
    std::function<bool()> m_isStopped;
    Reach m_reach;
    const StopScope* m_outer; ///< null: there is none
};

} // namespace pagestack
