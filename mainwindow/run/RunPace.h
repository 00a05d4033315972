#pragma once

#include <QtGlobal>

#include <deque>
#include <optional>

namespace pagestack {

/// How much there is to do, as far as it can be told before.
struct RunWork
{
    double pages = 0;
    double bytes = 0; ///< of the sources
};

/// How fast a run goes and how long it takes on. A page costs time, and so does a byte: how much
/// either does is learnt from the run itself, so that many small files after a few large ones, or
/// the other way round, are foreseen.
class RunPace
{
public:
    explicit RunPace(const RunWork& planned = {})
        : m_planned(planned)
    {
    }

    /// `done` from the start on, `workedMs` after it, pauses left out.
    void take(const RunWork& done, qint64 workedMs);

    /// Of the time that the whole run takes, 0..1; never less than before.
    double fraction();
    /// None before there is something to judge by.
    std::optional<qint64> remainingMs() const;
    /// Over the last seconds; 0 before the first of them is over.
    double pagesPerSecond() const;

private:
    struct Sample
    {
        RunWork done;
        double seconds = 0;
    };
    /// Seconds that a page and a byte take.
    struct Cost
    {
        double page = 0;
        double byte = 0;

        double of(const RunWork& work) const { return work.pages * page + work.bytes * byte; }
    };

    void learn(const RunWork& work, double seconds);
    RunWork left() const;

    RunWork m_planned;
    RunWork m_done;
    double m_seconds = 0; ///< of the last call
    std::deque<Sample> m_samples; ///< of the last seconds
    // Sums over what was learnt, of which the oldest counts least.
    double m_pagesPages = 0;
    double m_pagesBytes = 0;
    double m_bytesBytes = 0;
    double m_pagesTime = 0;
    double m_bytesTime = 0;
    RunWork m_work;
    double m_time = 0;
    Cost m_cost;
    double m_fraction = 0;
};

} // namespace pagestack
