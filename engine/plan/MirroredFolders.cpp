#include "engine/plan/MirroredFolders.h"

#include "engine/files/PosixFile.h"
#include "engine/support/Paths.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    bool isWithin(const QString& path, const QString& folder)
    {
        return path == folder || path.startsWith(joinedPath(folder, u""_s));
    }

} // namespace

MirroredFolders::~MirroredFolders()
{
    for (auto folder = m_made.crbegin(); folder != m_made.crend(); ++folder)
        ::rmdir(QFile::encodeName(*folder).constData()); // fails where there is something
}

QString MirroredFolders::fault(const QString& folder, const QString& outputFolder)
{
    const QString top = withoutEndingSlash(outputFolder).toString();
    QString there = folder;
    QFileInfo info(there);
    while (there != top && !info.exists() && !info.isSymLink()) {
        there = folderPart(there);
        info.setFile(there);
    }
    if (there == top && !info.exists())
        return {}; // is looked at by itself
    if (!info.isDir())
        return u"%1 is no folder"_s.arg(there);
    if (!isWithin(info.canonicalFilePath(), QFileInfo(top).canonicalFilePath()))
        return u"folder %1 leads out of the output folder"_s.arg(there);
    return info.isWritable() ? QString() : u"folder %1 is not writable"_s.arg(there);
}

void MirroredFolders::makeFor(const QString& path)
{
    const QString folder = folderPart(path);
    const QString below = m_outputFolder.isEmpty() ? QString() : pathBelow(folder, m_outputFolder);
    const std::scoped_lock lock(m_mutex);
    if (below.isEmpty() || m_ready.contains(folder))
        return;
    if (const QString reason = fault(folder, m_outputFolder); !reason.isNull())
        throw std::runtime_error(reason.toStdString());
    QString made = m_outputFolder;
    for (const QString& part : below.split(u'/')) {
        made = joinedPath(made, part);
        if (::mkdir(QFile::encodeName(made).constData(), 0777) == 0)
            m_made.append(made);
        else if (errno != EEXIST)
            throwFileSystemError("cannot make the folder", errno);
    }
    m_ready.insert(folder);
}

} // namespace pagestack
