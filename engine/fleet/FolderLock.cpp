#include "engine/fleet/FolderLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace pagestack {

FolderLock::FolderLock(const QString& folder)
    : m_file(::open(QFile::encodeName(folder).constData(), O_RDONLY | O_CLOEXEC))
{
    if (m_file < 0 || ::flock(m_file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK)
        return;
    ::close(m_file);
    throw std::runtime_error((folder + u" is watched by another program already"_s).toStdString());
}

FolderLock::~FolderLock()
{
    if (m_file >= 0)
        ::close(m_file);
}

} // namespace pagestack
