#include "filelist/FolderEntries.h"

#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"

#include <QFile>
#include <QFileInfo>

#include <system_error>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    namespace fs = std::filesystem;

    bool isHidden(const fs::path& path)
    {
        if (path.filename().native().starts_with('.'))
            return true;
#ifdef Q_OS_MACOS
        return QFileInfo(QFile::decodeName(path.c_str())).isHidden();
#else
        return false;
#endif
    }

    bool isPackage([[maybe_unused]] const fs::path& path)
    {
#ifdef Q_OS_MACOS
        return QFileInfo(QFile::decodeName(path.c_str())).isBundle();
#else
        return false;
#endif
    }

} // namespace

FolderEntries::FolderEntries(const QString& folder, bool includeSubdirectories)
    : m_includeSubdirectories(includeSubdirectories)
{
    open(fs::path(QFile::encodeName(folder).toStdString()));
}

void FolderEntries::open(const fs::path& folder)
{
    std::error_code error;
    fs::directory_iterator entries(folder, error);
    if (!error)
        m_open.push_back(std::move(entries));
}

std::optional<FolderEntries::Entry> FolderEntries::next()
{
    while (!m_open.empty()) {
        if (m_open.back() == fs::directory_iterator()) {
            m_open.pop_back();
            continue;
        }
        std::error_code ignored;
        const fs::directory_entry entry = *m_open.back();
        m_open.back().increment(ignored); // to the end when it fails
        if (isHidden(entry.path()))
            continue;
        const bool isDirectory = entry.is_directory(ignored);
        if (isDirectory && m_includeSubdirectories && !entry.is_symlink(ignored)
            && !isPackage(entry.path()))
            open(entry.path());
        const QString path = pathFromBytes(entry.path().c_str());
        if (isPath(path))
            return Entry { path, isDirectory };
        if (!isDirectory)
            systemLog(u"The name is no UTF-8 text, so the file is left out: "_s + path);
    }
    return std::nullopt;
}

} // namespace pagestack
