#include "engine/preview/BandRoom.h"

#include <stdexcept>

namespace pagestack {

namespace {

    constexpr int patienceWithOtherMs = 20;

    QMutex& turnOfLargeBands()
    {
        static QMutex turn;
        return turn;
    }

} // namespace

BandRoom::BandRoom(std::uint64_t bytes, const IsStopped& isStopped)
{
    if (bytes <= mostBytes)
        return;
    QMutex& turn = turnOfLargeBands();
    while (!turn.tryLock(patienceWithOtherMs))
        if (isStopped())
            throw std::runtime_error("stopped");
    m_turn = std::unique_lock(turn, std::adopt_lock);
}

} // namespace pagestack
