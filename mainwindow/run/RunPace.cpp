#include "mainwindow/run/RunPace.h"

#include <algorithm>
#include <cmath>

namespace pagestack {

namespace {

    constexpr double sampleSeconds = 0.4;
    constexpr double shownSeconds = 3; ///< over which the pages a second are counted
    constexpr double earliestSeconds = 0.8;
    constexpr double memorySeconds = 40; ///< what is older counts less than a third
    constexpr double pageInBytes = 1e6; ///< what a page costs besides its bytes, until it is known
    constexpr double trustInThat = 0.02; ///< against what was seen

    RunWork operator-(const RunWork& a, const RunWork& b)
    {
        return { a.pages - b.pages, a.bytes - b.bytes };
    }

} // namespace

void RunPace::take(const RunWork& done, qint64 workedMs)
{
    const double seconds = static_cast<double>(workedMs) / 1000;
    if (m_samples.empty())
        m_samples.push_back({});
    m_done = done;
    m_seconds = seconds;
    const Sample& last = m_samples.back();
    const RunWork work = done - last.done;
    // A large page may take longer: nothing is learnt of its half.
    if (seconds - last.seconds < sampleSeconds || (work.pages <= 0 && work.bytes <= 0))
        return;
    learn(work, seconds - last.seconds);
    m_samples.push_back({ done, seconds });
    while (m_samples.size() > 2 && m_samples.at(1).seconds < seconds - shownSeconds)
        m_samples.pop_front();
}

/// Least squares of time by pages and bytes, drawn a little to the first guess of their ratio,
/// which decides where the work that was seen does not tell the two apart.
void RunPace::learn(const RunWork& work, double seconds)
{
    const double pages = work.pages * pageInBytes;
    const double keep = std::exp(-seconds / memorySeconds);
    const auto add = [keep](double& sum, double value) { sum = sum * keep + value; };
    add(m_pagesPages, pages * pages);
    add(m_pagesBytes, pages * work.bytes);
    add(m_bytesBytes, work.bytes * work.bytes);
    add(m_pagesTime, pages * seconds);
    add(m_bytesTime, work.bytes * seconds);
    add(m_work.pages, pages);
    add(m_work.bytes, work.bytes);
    add(m_time, seconds);

    const double guess = m_time / (m_work.pages + m_work.bytes);
    const double ridge = trustInThat * (m_pagesPages + m_bytesBytes);
    const double a = m_pagesPages + ridge;
    const double b = m_bytesBytes + ridge;
    const double x = m_pagesTime + ridge * guess;
    const double y = m_bytesTime + ridge * guess;
    const double determinant = a * b - m_pagesBytes * m_pagesBytes;
    const double least = guess / 50; // neither is free, whatever the noise says
    double page = std::max(least, (x * b - y * m_pagesBytes) / determinant);
    double byte = std::max(least, (y * a - x * m_pagesBytes) / determinant);
    const double scale = m_time / (page * m_work.pages + byte * m_work.bytes);
    m_cost = { page * scale * pageInBytes, byte * scale };
}

RunWork RunPace::left() const
{
    const RunWork rest = m_planned - m_done;
    return { std::max(0.0, rest.pages), std::max(0.0, rest.bytes) };
}

double RunPace::fraction()
{
    const Cost guess { pageInBytes, 1 };
    const Cost& cost = m_cost.page > 0 ? m_cost : guess;
    const double all = cost.of(m_done) + cost.of(left());
    if (all > 0)
        m_fraction = std::clamp(cost.of(m_done) / all, m_fraction, 1.0);
    return m_fraction;
}

std::optional<qint64> RunPace::remainingMs() const
{
    if (m_cost.page <= 0 || m_seconds < earliestSeconds)
        return std::nullopt;
    // The page in hand is on its way since the last sample.
    const double since = m_seconds - m_samples.back().seconds;
    const double rest = m_cost.of(m_planned - m_samples.back().done);
    const double least = m_cost.of(left()) / 2;
    return std::llround(1000 * std::max({ 0.0, least, rest - since }));
}

double RunPace::pagesPerSecond() const
{
    if (m_samples.size() < 2 || m_seconds < earliestSeconds)
        return 0;
    const Sample& first = m_samples.front();
    return (m_done.pages - first.done.pages) / (m_seconds - first.seconds);
}

} // namespace pagestack
