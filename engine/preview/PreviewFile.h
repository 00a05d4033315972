#pragma once

#include "engine/image/tiff/TiffReader.h"

#include <QString>

#include <functional>
#include <memory>
#include <mutex>

namespace pagestack {

/// Asked often by lengthy work, on any thread: whether it is not wanted any more.
using IsStopped = std::function<bool()>;

/// The file that is looked at, opened once for all threads, and anew when it is another one or has
/// changed. What is being read of the file of before is not disturbed. Any thread.
class PreviewFile
{
public:
    /// Opens nothing yet.
    explicit PreviewFile(QString path)
        : m_path(std::move(path))
    {
    }

    const QString& path() const { return m_path; }

    /// The file as it is now. Throws std::runtime_error with the reason, which for a file that is
    /// gone is that of a run.
    std::shared_ptr<const OpenTiffFile> open(const IsStopped& isStopped);

private:
    const QString m_path;
    std::mutex m_mutex; ///< guards the one below
    std::shared_ptr<const OpenTiffFile> m_file;
};

} // namespace pagestack
