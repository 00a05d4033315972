#pragma once

#include "engine/fleet/MergedRun.h"

#include <QJsonObject>

#include <cstddef>

namespace pagestack {

/// Goes through the events of one source, state by state and in each of them in the order in which
/// they were written, and finds what came of it. One thread.
class LineReplay
{
public:
    /// Throws std::invalid_argument for a source that a plan cannot have.
    LineReplay(PlanSource plan, const PlanHead& head);

    /// The next event. Null, or why it has no place in the plan, a clause.
    QString take(int state, const QJsonObject& event);

    /// When there are no more events.
    MergedSource result();

private:
    /// A page as the state in hand tells of it.
    struct Told
    {
        MergedPage page;
        bool isOfThisTry = false; ///< since the last "begin"
        bool isGathered = false; ///< for a file that is not in place yet
        /// Place of the first page of the part in which a run last had it; -1: none.
        int part = -1;
        /// The part, of those that begin here, was tried again as this one, maybe without the pages
        /// that were done already; -1: it was not.
        int laterPart = -1;
    };

    Told& told(std::size_t place);
    int lastPart(int part);
    void beginPart();
    void endState();
    void addState();
    QString findPlaces(const QString& pages);
    void takeBegin(const QJsonObject& event);
    QString takePage(const QJsonObject& event);
    QString takeSource(const QJsonObject& event);
    void endPage(Told& told, MergedPage::Ending ending, const QJsonObject& event);

    QList<int> m_numbers; ///< of the pages
    MergedSource m_source;
    int m_state = -1; ///< the one in hand
    std::vector<Told> m_told; ///< one a page
    std::vector<std::size_t> m_touched; ///< places of `m_told` of which the state speaks
    std::vector<std::size_t> m_places; ///< of the event in hand
    std::optional<std::optional<FileDigest>> m_begun; ///< of the source, at its last "begin"
    std::optional<FileDigest> m_digest; ///< of the source, as the state in hand has it
    std::optional<FileDigest> m_gathered;
};

} // namespace pagestack
