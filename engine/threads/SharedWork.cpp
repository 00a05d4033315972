#include "engine/threads/SharedWork.h"

namespace pagestack {

void SharedWork::run(const std::function<void()>& work)
{
    {
        const Lock own = lock();
        m_work = &work;
        notify();
    }
    work();
    Lock own = lock();
    m_work = nullptr;
    wait(own, [this] { return m_helpers == 0; });
}

void SharedWork::helpUntil(Lock& lock, const Condition& isOver)
{
    for (;;) {
        wait(lock, [&] { return m_work != nullptr || isOver(); });
        if (isOver())
            return;
        const std::function<void()>& work = *m_work;
        ++m_helpers;
        lock.unlock();
        work();
        lock.lock();
        m_work = nullptr; // all parts are taken
        if (--m_helpers == 0)
            notify();
    }
}

} // namespace pagestack
