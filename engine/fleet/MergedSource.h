#pragma once

#include "engine/files/FileDigest.h"
#include "engine/fleet/PlanFile.h"

#include <QString>

#include <cstddef>
#include <optional>
#include <vector>

namespace pagestack {

/// What became of one page of a plan, as the states of its runs tell.
struct MergedPage
{
    /// Where two states speak of a page, the later one of these counts.
    enum class Outcome { Missing, Failed, Skipped, Written };
    /// Of the last try at the part of the source that has the page.
    enum class Ending {
        None, ///< nobody began
        Open, ///< it was killed
        Stopped,
        Failed,
        Done,
    };

    int number = 0; ///< in the source, from 1; 0 for a source of which no page is converted
    Outcome outcome = Outcome::Missing;
    Ending ending = Ending::None;
    int state = -1; ///< number of the state that tells it
    std::optional<FileDigest> digest {}; ///< of the page's own file, in place
    QString reason {}; ///< of its failure, or what it has lost all the same
    bool isOfPart = false; ///< it failed with its part, before its turn
    QString partReason {}; ///< what failed with the part that begins here as a whole
    QString partWarning {};
};

/// What became of one source of a plan.
struct MergedSource
{
    /// Pages, by their place in `pages`, that two states have written.
    struct Twice
    {
        int state = 0;
        int otherState = 0;
        std::vector<std::size_t> places {};
    };

    /// Pages with one thing in common, as PageChoice reads them; empty: the source as a whole.
    struct Some
    {
        QString pages;
        QString reason; ///< a clause
    };

    PlanSource plan;
    QString folder; ///< of its outputs
    /// Those of the plan, in its order; a single one, of number 0, where there are none.
    std::vector<MergedPage> pages;
    std::optional<FileDigest> digest; ///< of the source
    std::optional<FileDigest> gathered; ///< of the file that keeps the pages together, in place
    bool isKeptTogether = false;
    bool hasChanged = false; ///< between the parts of it
    std::vector<Twice> twice;

    /// Of the page at this place.
    QString targetPath(std::size_t place) const;
    QString pagesText(const std::vector<std::size_t>& places) const;

    /// What is missing: "never begun", "begun and not ended", "stopped" or "ended without a word of
    /// them".
    std::vector<Some> gaps() const;
    std::vector<Some> failures() const;
};

/// "page 3", "pages 1-3"; empty for none.
QString pagesPhrase(const QString& pages);

} // namespace pagestack
