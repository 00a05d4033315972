#include "engine/preview/PreviewFile.h"

#include "engine/threads/StopScope.h"

#include <QFile>

#include <stdexcept>
#include <utility>

namespace pagestack {

std::shared_ptr<const OpenTiffFile> PreviewFile::open(const IsStopped& isStopped)
{
    const std::lock_guard lock(m_mutex);
    const std::optional<FileState> state = fileState(QFile::encodeName(m_path));
    const auto before = std::exchange(m_known, state);
    if (before && *before != state && m_changed)
        m_changed();
    if (m_file && state && m_file->stateAtOpening() == *state)
        return m_file;
    m_file.reset();
    const StopScope scope(isStopped);
    auto opened = std::make_shared<const OpenTiffFile>(m_path);
    if (isStopped()) // the chain of its pages may end too early
        throw std::runtime_error("stopped");
    m_file = std::move(opened);
    return m_file;
}

void checkPage(const OpenTiffFile& file, int index)
{
    const int pages = file.pageCount();
    if (index >= pages)
        throw std::out_of_range("the file has no page " + std::to_string(index + 1)
                                + " any more, its last one is " + std::to_string(pages));
}

} // namespace pagestack
