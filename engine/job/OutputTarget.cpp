#include "engine/job/OutputTarget.h"

#include "engine/files/StagedFile.h"

#include <QFile>

#include <stdexcept>

namespace pagestack {

OutputTarget::OutputTarget(const QString& path)
{
    QByteArray resolved = QFile::encodeName(path);
    try {
        resolved = StagedFile::resolvedTarget(path);
    } catch (const std::runtime_error&) {
        // Links that lead in a circle: the writer will say so, and nothing is replaced.
    }
    const qsizetype slash = resolved.lastIndexOf('/');
    m_folder = fileIdentity(resolved.left(slash + 1));
    m_name = QFile::decodeName(m_folder ? resolved.mid(slash + 1) : resolved)
                 .normalized(QString::NormalizationForm_C)
                 .toCaseFolded();
    m_existing = fileIdentity(resolved);
}

bool OutputTarget::isSameAs(const OutputTarget& other) const
{
    if (m_existing && m_existing == other.m_existing)
        return true;
    return m_folder == other.m_folder && m_name == other.m_name;
}

} // namespace pagestack
