#pragma once

#include "engine/plan/OutputFile.h"
#include "engine/plan/OutputNames.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace pagestack {

class Settings;

/// A file that a run writes, by its place in the list of outputs.
struct PlannedTarget
{
    qsizetype output = 0;
    int page = 0; ///< 0: the file that keeps the pages together
};

/// The names of all outputs of a run, before anything is written, and what they come upon. Nothing
/// is changed on the disk, but for what nameFolding() does. Any thread.
class RunPlan
{
public:
    /// Which outputs get a number behind their names, the lowest with which each of their names is
    /// nobody else's and leads to no file.
    enum class Numbering {
        None,
        Clashing, ///< those that come later to a file of this run, or would replace another's
                  ///< source
        Taken, ///< the same, and those that would replace any file
    };

    static constexpr qsizetype otherFile = -1; ///< the first of the other files; -2: the second

    /// A target that an earlier output writes as well.
    struct Shared
    {
        PlannedTarget target;
        qsizetype first = otherFile; ///< the earlier output, or an `otherFile`
    };
    /// A source that another output would replace.
    struct Replaced
    {
        PlannedTarget target;
        qsizetype source = 0; ///< the output whose source it is
    };

    /// Plans `outputs` with `settings`, which is borrowed, and `options`. `others` are the resolved
    /// paths of files that the run writes besides. The plan ends early, and says
    /// nothing of the outputs that were left, once `isWanted` is false.
    RunPlan(
        const QList<OutputFile>& outputs, const Settings& settings, const RunOptions& options = {},
        Numbering numbering = Numbering::None, const QStringList& others = {},
        const std::function<bool()>& isWanted = [] { return true; });

    /// As given, completed (see OutputNames), with their numbers.
    const QList<OutputFile>& outputs() const { return m_outputs; }

    /// Name of the target, without folder.
    QString name(const PlannedTarget& target) const;
    const OutputNames& names() const { return m_names; }

    // What was found, in the order of the run; with numbers nothing of what these avoid.
    const std::vector<Shared>& shared() const { return m_shared; }
    const std::vector<PlannedTarget>& existing() const { return m_existing; }
    const std::vector<PlannedTarget>& writeProtected() const { return m_protected; } ///< of those
    const std::vector<Replaced>& replacedSources() const { return m_replaced; }

    /// Whether an output changes what a later page is read from or where it goes: by a shared
    /// target, a replaced source, or a source that is still missing and that it makes.
    bool hasHazards() const;

    /// What is to be known of the run though nothing is wrong with it, a clause each.
    QStringList remarks() const;

    /// What is wrong with folders that outputs go to, a clause each: they are missing, cannot be
    /// written or, below an output folder, cannot be made or lead out of it.
    QStringList folderFaults() const;

private:
    friend class Planner;

    const Settings& m_settings;
    const RunOptions m_options;
    const OutputNames m_names;
    QList<OutputFile> m_outputs;
    std::vector<Shared> m_shared;
    std::vector<PlannedTarget> m_existing;
    std::vector<PlannedTarget> m_protected;
    std::vector<Replaced> m_replaced;
    bool m_makesSource = false;
};

} // namespace pagestack
