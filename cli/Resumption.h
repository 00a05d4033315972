#pragma once

#include "engine/fleet/RunState.h"
#include "engine/plan/OutputFile.h"
#include "engine/plan/OutputNames.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

namespace pagestack {

/// What of a source a former run has left to do, proved by size and digest of the source and of the
/// outputs. Reads all of them.
struct Resumption
{
    bool isDone = false;
    QList<int> pages; ///< that are left
    int provenPages = 0;
    QSet<QString> own {}; ///< paths of outputs of the former run that are to be replaced
    std::vector<std::pair<QString, FileDigest>> proven {}; ///< outputs that are left alone
    QStringList remarks {}; ///< what is not as it was left, a line each

    /// Of `output`, which is named and whose item has the pages of this run. `state` and `names`
    /// are those of the run.
    static Resumption of(const OutputFile& output, const QList<int>& wanted, const RunState& state,
                         const OutputNames& names, bool isTogether);
};

} // namespace pagestack
