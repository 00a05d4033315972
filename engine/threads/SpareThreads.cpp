#include "engine/threads/SpareThreads.h"

namespace pagestack {

ThreadClaim::~ThreadClaim()
{
    if (m_from != nullptr)
        ++m_from->m_spare;
}

ThreadClaim SpareThreads::take()
{
    --m_spare;
    return ThreadClaim(*this);
}

ThreadClaim SpareThreads::tryTake()
{
    int spare = m_spare;
    while (spare > 0)
        if (m_spare.compare_exchange_weak(spare, spare - 1))
            return ThreadClaim(*this);
    return {};
}

} // namespace pagestack
