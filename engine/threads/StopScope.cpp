#include "engine/threads/StopScope.h"

#include <utility>

namespace pagestack {

namespace {

    thread_local const StopScope* scopeOfThread = nullptr;

} // namespace

StopScope::StopScope(std::function<bool()> isStopped)
    : m_isStopped(std::move(isStopped))
{
    scopeOfThread = this;
}

StopScope::~StopScope() { scopeOfThread = nullptr; }

bool StopScope::isStopped() { return scopeOfThread && scopeOfThread->m_isStopped(); }

} // namespace pagestack
