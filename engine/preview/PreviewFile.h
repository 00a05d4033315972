#pragma once

#include "engine/image/tiff/TiffReader.h"

#include <QString>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace pagestack {

/// Asked often by lengthy work, on any thread: whether it is not wanted any more.
using IsStopped = std::function<bool()>;

/// The file that is looked at, opened once for all threads, and anew when it is another one or has
/// changed. What is being read of the file of before is not disturbed. Any thread.
class PreviewFile
{
public:
    /// Opens nothing yet. `changed` is called, on the thread of the `open` that has noticed it and
    /// before anything is read of the new file, when it is not the file of the last `open` any
    /// more.
    explicit PreviewFile(QString path, std::function<void()> changed = {})
        : m_path(std::move(path))
        , m_changed(std::move(changed))
    {
    }

    const QString& path() const { return m_path; }

    /// The file as it is now. Throws std::runtime_error with the reason, which for a file that is
    /// gone is that of a run.
    std::shared_ptr<const OpenTiffFile> open(const IsStopped& isStopped);

private:
    const QString m_path;
    const std::function<void()> m_changed;
    std::mutex m_mutex; ///< guards those below
    std::shared_ptr<const OpenTiffFile> m_file;
    std::optional<std::optional<FileState>>
        m_known; ///< at the last `open`; none for a missing file
};

/// Throws std::out_of_range, with a sentence, unless the file has page `index`, from 0.
void checkPage(const OpenTiffFile& file, int index);

} // namespace pagestack
