#pragma once

#include <functional>

namespace pagestack {

/// While it exists, lengthy look-ups on its thread can be stopped. One a thread; it ends on the
/// thread that made it.
class StopScope
{
public:
    /// `isStopped` is asked often.
    explicit StopScope(std::function<bool()> isStopped);
    ~StopScope();
    StopScope(const StopScope&) = delete;
    StopScope& operator=(const StopScope&) = delete;

    /// Whether the look-up under way on this thread should end. False where there is no scope.
    static bool isStopped();

private:
    std::function<bool()> m_isStopped;
};

} // namespace pagestack
