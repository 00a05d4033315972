#include "engine/support/Signals.h"

#include <QSocketNotifier>

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <time.h>
#include <unistd.h>

namespace pagestack {

namespace {

    // What a handler may touch: lock-free atomics only.
    std::atomic<int> firstSignal = 0;
    std::atomic<int> wakeUpPipe = -1;
    std::atomic<long long> firstAtMs = 0;
    static_assert(std::atomic<long long>::is_always_lock_free);

    long long nowMs()
    {
        timespec now = {};
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        return now.tv_sec * 1000LL + now.tv_nsec / 1'000'000;
    }

    /// Tools that end a group of processes signal the leader and the group, so that one request
    /// comes twice. What comes within this time is the same request.
    constexpr long long sameRequestMs = 100;

    extern "C" void takeSignal(int number)
    {
        const int error = errno;
        int none = 0;
        if (firstSignal.compare_exchange_strong(none, number)) {
            firstAtMs = nowMs();
            const char wakeUp = 0;
            // A full or closed pipe is no loss: one byte is enough, and received() tells as well.
            [[maybe_unused]] const ssize_t written = ::write(wakeUpPipe, &wakeUp, 1);
        } else if (const long long first = firstAtMs;
                   first != 0 && nowMs() - first > sameRequestMs) {
            ::_exit(128 + number);
        }
        errno = error;
    }

} // namespace

Signals::Signals()
{
    firstSignal = 0;
    firstAtMs = 0;
    if (::pipe(m_pipe.data()) == 0) {
        for (const int end : m_pipe) {
            ::fcntl(end, F_SETFD, FD_CLOEXEC);
            ::fcntl(end, F_SETFL, O_NONBLOCK);
        }
        wakeUpPipe = m_pipe[1];
        auto* notifier = new QSocketNotifier(m_pipe[0], QSocketNotifier::Read, this);
        connect(notifier, &QSocketNotifier::activated, this, [this, notifier] {
            notifier->setEnabled(false);
            emit interrupted();
        });
    }
    struct sigaction action = {};
    action.sa_handler = takeSignal;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (const int number : { SIGINT, SIGTERM, SIGHUP }) {
        struct sigaction before = {};
        if (::sigaction(number, nullptr, &before) != 0 || before.sa_handler == SIG_IGN)
            continue;
        ::sigaction(number, &action, nullptr);
        m_before.emplace_back(number, before);
    }
}

Signals::~Signals()
{
    for (const auto& [number, before] : m_before)
        ::sigaction(number, &before, nullptr);
    wakeUpPipe = -1;
    for (const int end : m_pipe) {
        if (end >= 0)
            ::close(end);
    }
}

int Signals::received() { return firstSignal; }

} // namespace pagestack
