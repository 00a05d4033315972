#include "engine/job/SharedSource.h"

#include <QFile>

#include <stdexcept>
#include <utility>

namespace pagestack {

SharedSource::SharedSource(const QString& path)
    : m_path(path)
    , m_identity(fileIdentity(QFile::encodeName(path)))
{
}

std::unique_ptr<TiffDocument> SharedSource::openAhead(LogHold& hold)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_document) {
        if (std::exchange(m_wasTried, true))
            throw std::runtime_error("the file could not be opened");
        m_document = std::make_unique<TiffDocument>(m_path);
        m_complaints = hold.takeLines();
    }
    return m_document->clone();
}

std::unique_ptr<TiffDocument> SharedSource::open()
{
    const std::scoped_lock lock(m_mutex);
    if (!m_document)
        m_document = std::make_unique<TiffDocument>(m_path);
    writeHeldLines(std::exchange(m_complaints, {}));
    return m_document->clone();
}

} // namespace pagestack
