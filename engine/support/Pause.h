#pragma once

#include <QTimer>

#include <functional>
#include <utility>

namespace pagestack {

/// Calls `then` once, `ms` after the last start(): what comes often is answered when it pauses.
class Pause : public QTimer
{
public:
    Pause(int ms, std::function<void()> then)
    {
        setSingleShot(true);
        setInterval(ms);
        callOnTimeout(std::move(then));
    }

    /// As start(), unless it has begun already: what goes on for long is answered all the while.
    void begin()
    {
        if (!isActive())
            start();
    }
};

} // namespace pagestack
