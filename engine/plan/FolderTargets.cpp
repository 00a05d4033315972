#include "engine/plan/FolderTargets.h"

#include <QFile>

#include <filesystem>
#include <system_error>

namespace pagestack {

bool FolderTargets::isEmpty()
{
    if (!m_isEmpty) {
        std::error_code failure; // no permission to list it, say
        m_isEmpty = std::filesystem::is_empty(QFile::encodeName(m_folder).toStdString(), failure)
            && !failure;
    }
    return *m_isEmpty;
}

std::optional<qsizetype> FolderTargets::writer(const QString& name)
{
    const auto [begin, end] = std::as_const(m_targets).equal_range(NameFolding {}.folded(name));
    for (auto target = begin; target != end; ++target) {
        if (target->name == name)
            return target->writer;
        if (!m_folding)
            m_folding = nameFolding(m_folder);
        if (m_folding->folded(target->name) == m_folding->folded(name))
            return target->writer;
    }
    return std::nullopt;
}

void FolderTargets::add(const QString& name, qsizetype writer)
{
    m_targets.insert(NameFolding {}.folded(name), { name, writer });
}

} // namespace pagestack
