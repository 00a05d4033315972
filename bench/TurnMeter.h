#pragma once

#include <QAbstractEventDispatcher>
#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <ctime>

/// How long the main thread was not free since this was made: the processor time of the longest
/// turn of the event loop, and the longest time between two calls of a timer of 1 ms, which a busy
/// machine makes longer. Main thread.
class TurnMeter
{
public:
    TurnMeter()
    {
        QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                         &m_beat, [this] {
                             const double now = cpuMs();
                             m_longestCpuMs = std::max(m_longestCpuMs, now - m_cpuMs);
                             m_cpuMs = now;
                         });
        QObject::connect(&m_beat, &QTimer::timeout, &m_beat, [this] {
            m_longestGapMs
                = std::max(m_longestGapMs, static_cast<double>(m_sinceBeat.nsecsElapsed()) / 1e6);
            m_sinceBeat.start();
        });
        m_beat.setTimerType(Qt::PreciseTimer);
        m_sinceBeat.start();
        m_beat.start(1);
    }

    double longestCpuMs() const { return m_longestCpuMs; }
    double longestGapMs() const { return m_longestGapMs; }

private:
    static double cpuMs()
    {
        std::timespec time {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
    }

    QTimer m_beat;
    QElapsedTimer m_sinceBeat;
    double m_cpuMs = cpuMs();
    double m_longestCpuMs = 0;
    double m_longestGapMs = 0;
};

/// Memory of this process in megabytes (10^6 bytes); 0 where the system does not tell it so.
inline double residentMb(const char* field = "VmRSS:")
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return static_cast<double>(line.simplified().split(' ').value(1).toLongLong()) * 1024
                / 1e6;
    return 0;
}
