#include "cli/FailedSources.h"

#include "engine/files/StagedFile.h"
#include "engine/fleet/PlanFile.h"
#include "engine/job/Process.h"

#include <QFile>

#include <algorithm>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

void FailedSources::listenTo(const Process& job)
{
    QObject::connect(
        &job, &Process::diagnosed, &job,
        [this](const Diagnostic& diagnostic) {
            if (diagnostic.severity == Diagnostic::Severity::Error
                && m_sources.contains(diagnostic.sourcePath))
                add(diagnostic.sourcePath, diagnostic.page);
        },
        Qt::DirectConnection);
}

void FailedSources::add(const QString& path, int page)
{
    if (m_entries.empty() || m_entries.back().path != path)
        m_entries.push_back({ path, {} });
    else if (m_entries.back().pages.isEmpty())
        return;
    QList<int>& pages = m_entries.back().pages;
    if (page == 0 || m_isTogether)
        pages.clear();
    else if (!pages.contains(page))
        pages.append(page);
}

QString FailedSources::save(const QString& path) const
try {
    StagedFile file(path);
    for (const Entry& entry : m_entries) {
        if (entry.path.contains(u'\n'))
            throw std::runtime_error("a name with a line end has no place in it");
        QByteArray line = QFile::encodeName(entry.path);
        const QString pages
            = entry.pages.isEmpty() ? m_sources.value(entry.path) : pageRangesText(entry.pages);
        if (!pages.isEmpty())
            line += '\t' + pages.toLatin1();
        line += '\n';
        file.write({ reinterpret_cast<const std::uint8_t*>(line.constData()),
                     static_cast<std::size_t>(line.size()) });
    }
    file.commit();
    return {};
} catch (const std::runtime_error& error) {
    return QString::fromUtf8(error.what());
}

} // namespace pagestack
