#pragma once

#include "engine/fleet/LineSpool.h"
#include "engine/fleet/PlanFile.h"
#include "engine/fleet/RecordSort.h"
#include "engine/sources/Sources.h"

#include <array>
#include <functional>
#include <optional>

namespace pagestack {

/// Makes a plan of any number of sources in bounded memory: what it knows of them goes through
/// temporary files. One thread: sources are added, then write() is called. Throws
/// std::runtime_error when a temporary file cannot be written, and StopReceived once `isWanted` is
/// false.
class PlanMaker
{
public:
    /// What is told on the way, a line each.
    struct Told
    {
        std::function<void(const QString& line)> trouble; ///< something is not planned
        std::function<void(const QString& line)> remark;
        std::function<void(qint64 done, qint64 total)> progress; ///< in sources
        std::function<bool()> isWanted;
    };

    PlanMaker(const PlanHead& head, Told told);

    void add(const Source& source);
    qint64 sources() const { return m_count; }

    /// Reads every source, looks for names that two of them want, which are told and counted, and
    /// hands on the plan unless there are any. Gives their number.
    qint64 write(const PlanWriter::Put& put);

private:
    /// A name, by a digest of it.
    struct Key
    {
        std::array<std::uint64_t, 2> digest {};
        std::uint64_t place = 0; ///< offset of the line
        /// Number of the target, -1: the source itself; of a source that was given, a hash of its
        /// choice of pages.
        std::int64_t target = 0;

        // clang-tidy 14 takes the zero that a comparison is compared with for a pointer.
        friend auto operator<=>(const Key&, const Key&) = default; // NOLINT(modernize-use-nullptr)
    };

    static Key keyOf(const QString& path, std::uint64_t place, std::int64_t target);
    void findDuplicates();
    void readSources();
    qint64 findClashes();
    /// Who wants a name, or has it.
    struct Claim
    {
        QString path;
        QString shown;
        bool isSource = false;
    };

    Claim claimOf(const Key& key);
    void compare(std::vector<Claim>& claims, const Claim& claim, qint64& count);
    QString targetPath(const PlanSource& source, std::int64_t target) const;
    QString realFolder(const QString& folder);
    void checkWanted() const;

    const PlanHead m_head;
    const Told m_told;
    LineSpool m_given; ///< sources as they came
    LineSpool m_read; ///< what became of them
    RecordSort<Key> m_sources;
    RecordSort<Key> m_targets;
    std::vector<std::uint64_t> m_duplicates; ///< places in `m_given`, ascending
    std::vector<std::uint64_t> m_twice; ///< the same, of those with other pages
    QString m_root; ///< the folder that all sources are below
    QString m_lastFolder;
    QString m_lastRealFolder;
    qint64 m_count = 0;
};

/// A signal came.
class StopReceived : public std::runtime_error
{
public:
    StopReceived()
        : std::runtime_error("cancelled")
    {
    }
};

} // namespace pagestack
