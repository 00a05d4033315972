#pragma once

#include "engine/files/FileState.h"
#include "engine/image/TiffDocument.h"
#include "engine/support/SystemLog.h"

#include <memory>
#include <mutex>
#include <optional>

namespace pagestack {

/// One source of a run, opened once by whoever needs it first; all threads read the file that was
/// opened then. Any thread.
class SharedSource
{
public:
    /// Looks up which file it is and opens nothing.
    explicit SharedSource(const QString& path);

    /// None when there was no file at the path.
    const std::optional<FileIdentity>& identity() const { return m_identity; }

    /// For a worker: a document of its own. What opening the file has to say is taken out of
    /// `hold`, which is empty, and kept. Throws std::runtime_error when the file could not be
    /// opened, now or by an earlier call.
    std::unique_ptr<TiffDocument> openAhead(LogHold& hold);

    /// For the job's thread, when it is the turn of the source: the same, with what there is to be
    /// said written to the system log; tries again what has failed ahead.
    std::unique_ptr<TiffDocument> open();

private:
    const QString m_path;
    const std::optional<FileIdentity> m_identity;

    std::mutex m_mutex; ///< guards the fields below
    std::unique_ptr<TiffDocument> m_document; ///< only cloned
    HeldLines m_complaints;
    bool m_wasTried = false; ///< ahead
};

} // namespace pagestack
