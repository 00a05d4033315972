#include "engine/threads/StopScope.h"

#include <stdexcept>
#include <utility>

namespace pagestack {

namespace {

    thread_local const StopScope* scopeOfThread = nullptr;

} // namespace

StopScope::StopScope(std::function<bool()> isStopped, Reach reach)
    : m_isStopped(std::move(isStopped))
    , m_reach(reach)
    , m_outer(scopeOfThread)
{
    scopeOfThread = this;
}

StopScope::~StopScope() { scopeOfThread = m_outer; }

bool StopScope::isStopped() { return scopeOfThread && scopeOfThread->m_isStopped(); }

bool StopScope::isPageStopped()
{
    return scopeOfThread && scopeOfThread->m_reach == Reach::PagesToo
        && scopeOfThread->m_isStopped();
}

void StopScope::leavePageIfStopped()
{
    if (isPageStopped())
        throw std::runtime_error("stopped");
}

} // namespace pagestack
