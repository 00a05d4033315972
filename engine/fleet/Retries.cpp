#include "engine/fleet/Retries.h"

#include <algorithm>

namespace pagestack {

namespace {

    constexpr qint64 firstPauseMs = 1000;
    constexpr qint64 longestPauseMs = 60'000;

} // namespace

void Retries::pause(const QString& path)
{
    Pause& pause = m_pauses[path];
    pause.lengthMs = std::clamp<qint64>(pause.lengthMs * 2, firstPauseMs, longestPauseMs);
    pause.untilMs = m_clock.elapsed() + pause.lengthMs;
}

qint64 Retries::leftMs(const QString& path) const
{
    const auto pause = m_pauses.constFind(path);
    return pause == m_pauses.cend() ? 0 : pause->untilMs - m_clock.elapsed();
}

bool Retries::isPaused(const QString& path) const
{
    return std::max(leftMs(QString()), leftMs(path)) > 0;
}

qint64 Retries::nextMs(qint64 most) const
{
    for (const Pause& pause : m_pauses)
        if (const qint64 left = pause.untilMs - m_clock.elapsed(); left > 0)
            most = std::min(most, left);
    return most;
}

bool Retries::isNews(const QString& path, const QString& line)
{
    const auto pause = m_pauses.constFind(path);
    m_told[path].append(line);
    return pause == m_pauses.cend() || !pause->told.contains(line);
}

void Retries::keepTold(const QString& path)
{
    const QStringList lines = m_told.take(path);
    const auto pause = m_pauses.find(path);
    if (pause == m_pauses.end())
        return;
    for (const QString& line : lines)
        if (!pause->told.contains(line))
            pause->told.append(line);
}

} // namespace pagestack
