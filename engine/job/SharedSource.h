#pragma once

#include "engine/image/TiffDocument.h"

#include <memory>
#include <mutex>

namespace pagestack {

/// One source of a run, opened once by whoever needs it first; all threads read the file that was
/// opened then. Any thread.
class SharedSource
{
public:
    /// Opens nothing yet.
    SharedSource(QString path, const PageTreatment& treatment)
        : m_path(std::move(path))
        , m_treatment(treatment)
    {
    }

    /// Returns a document of the calling worker's own. Throws std::runtime_error when the file
    /// could not be opened, now or by an earlier call.
    std::unique_ptr<TiffDocument> openAhead();

    /// Returns the document of the job's thread, when it is the turn of the source. Tries again
    /// what has failed ahead; throws std::runtime_error when it fails again.
    std::shared_ptr<TiffDocument> open();

private:
    const QString m_path;
    const PageTreatment m_treatment;

    std::mutex m_mutex; ///< guards the fields below
    std::shared_ptr<TiffDocument> m_document; ///< of the job's thread; the others clone it
    bool m_wasTried = false; ///< ahead
};

} // namespace pagestack
