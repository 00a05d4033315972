#pragma once

#include "engine/fleet/FaultList.h"
#include "engine/fleet/MergedSource.h"

namespace pagestack {

/// Reads files back and compares them with what the states say of them. One thread.
class OutputCheck
{
public:
    /// The outputs of `source`, and the source itself where it is still there and none of them.
    void check(const MergedSource& source);

    const FaultList& faults() const { return m_faults; }
    qint64 outputs() const { return m_outputs; } ///< looked at so far
    qint64 sources() const { return m_sources; }
    QJsonObject toJson() const;

private:
    void compare(const QString& path, const FileDigest& digest, bool isSource);

    FaultList m_faults;
    qint64 m_outputs = 0;
    qint64 m_sources = 0;
};

} // namespace pagestack
