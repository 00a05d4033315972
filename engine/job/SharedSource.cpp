#include "engine/job/SharedSource.h"

#include <stdexcept>
#include <utility>

namespace pagestack {

std::unique_ptr<TiffDocument> SharedSource::openAhead()
{
    const std::scoped_lock lock(m_mutex);
    if (!m_document) {
        if (std::exchange(m_wasTried, true))
            throw std::runtime_error("the file could not be opened");
        m_document = std::make_shared<TiffDocument>(m_path, m_treatment);
    }
    return m_document->clone();
}

std::shared_ptr<TiffDocument> SharedSource::open()
{
    const std::scoped_lock lock(m_mutex);
    if (!m_document)
        m_document = std::make_shared<TiffDocument>(m_path, m_treatment);
    return m_document;
}

} // namespace pagestack
