#pragma once

#include "engine/fleet/MergedSource.h"
#include "engine/fleet/PlanFile.h"
#include "engine/fleet/RecordSort.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

namespace pagestack {

/// A plan, and what all states of its runs say of it. The states are read twice and sorted on the
/// disk, so that memory does not grow with them. One thread.
class MergedRun
{
public:
    /// Events of a state that have no place in the plan.
    struct Foreign
    {
        QString state; ///< path of its file
        qint64 events = 0;
        QString reason; ///< a clause
    };
    using UseForeign = std::function<void(const Foreign& foreign)>;

    /// Reads the states for the first time. Throws std::runtime_error with the path of the file and
    /// the reason: one that cannot be read, a plan that is cut off or was changed.
    MergedRun(const QString& planPath, const QStringList& statePaths, UseForeign useForeign);

    /// Calls `use` with each source of the plan, in its order. Once. Throws as above.
    void forEach(const std::function<void(const MergedSource& source)>& use);

    const PlanHead& head() const { return m_plan.head(); }
    const PlanEnd& end() const { return m_plan.end(); }
    const QStringList& states() const { return m_states; }
    qint64 runs() const { return m_runs; }
    qint64 tornLines() const { return m_tornLines; }
    QDateTime started() const { return m_started; } ///< the earliest run; invalid: there was none
    QDateTime ended() const { return m_ended; } ///< the last that is known of any

private:
    /// The place of an event. Sorted, those of a source follow each other, state by state.
    struct Place
    {
        std::uint64_t line = 0;
        std::uint64_t state = 0;
        std::uint64_t offset = 0;
        // clang-tidy 14 takes the zero that a comparison is compared with for a pointer.
        friend auto operator<=>(const Place&, const Place&)
            = default; // NOLINT(modernize-use-nullptr)
    };

    void readState(int number);
    /// Whether it is a run of this plan.
    bool beginRun(const QJsonObject& event, const QString& path);

    const QString m_planPath;
    PlanReader m_plan;
    QStringList m_states;
    UseForeign m_useForeign;
    RecordSort<Place> m_places;
    qint64 m_runs = 0;
    qint64 m_tornLines = 0;
    QDateTime m_started;
    QDateTime m_ended;
};

} // namespace pagestack
