#pragma once

#include <QObject>

#include <array>
#include <signal.h>
#include <utility>
#include <vector>

namespace pagestack {

/// Catches SIGINT, SIGTERM and SIGHUP while it exists. One at a time, on the main thread. A signal
/// that was ignored before, as under nohup, stays ignored.
///
/// The first signal is announced on the main thread; a second one, unless it comes within 100 ms,
/// ends the program at once, with the code 128 + its number.
class Signals : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Signals)

public:
    Signals();
    ~Signals() override;

    /// Number of the first signal, 0 before it. Needs no event loop.
    static int received();

signals:
    void interrupted();

private:
    std::array<int, 2> m_pipe = { -1, -1 };
    std::vector<std::pair<int, struct sigaction>>
        m_before; ///< the actions of the signals that are caught
};

} // namespace pagestack
