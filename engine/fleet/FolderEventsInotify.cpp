#include "engine/files/PosixFile.h"
#include "engine/fleet/FolderEvents.h"
#include "engine/support/Paths.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace pagestack {

namespace {

    /// File systems on which others change files without this system's knowledge: statfs(2).
    constexpr std::array<unsigned long, 12> sharedFileSystems {
        0x6969, // NFS
        0x517B, // SMB
        0xFF534D42, // CIFS
        0xFE534D42, // SMB2
        0x65735546, // FUSE
        0x01021997, // 9P
        0x00C36400, // Ceph
        0x5346414F, // AFS
        0x0BD00BD3, // Lustre
        0x47504653, // GPFS
        0x786F4256, // shared folders of a virtual machine
        0x7461636F, // OCFS2
    };

    bool isShared(const QByteArray& folder)
    {
        struct statfs status = {};
        if (::statfs(folder.constData(), &status) != 0)
            return true;
        const auto type = static_cast<unsigned long>(status.f_type) & 0xFFFFFFFFUL;
        return std::ranges::find(sharedFileSystems, type) != sharedFileSystems.end();
    }

} // namespace

FolderEvents::FolderEvents()
    : m_file(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
{
}

FolderEvents::~FolderEvents()
{
    if (m_file >= 0)
        ::close(m_file);
}

bool FolderEvents::add(const QString& folder)
{
    const QByteArray name = QFile::encodeName(folder);
    if (m_file < 0 || isShared(name))
        return false;
    const int number
        = ::inotify_add_watch(m_file, name.constData(),
                              IN_MOVED_TO | IN_CLOSE_WRITE | IN_CREATE | IN_ATTRIB | IN_ONLYDIR);
    if (number >= 0)
        m_folders[number] = folder;
    return number >= 0;
}

QSet<QString> FolderEvents::takeMovedIn()
{
    QSet<QString> found;
    std::array<char, 65536> bytes {};
    while (m_file >= 0) {
        const ssize_t count
            = retryInterrupted([&] { return ::read(m_file, bytes.data(), bytes.size()); });
        if (count <= 0)
            break;
        std::size_t at = 0;
        while (at + sizeof(inotify_event) <= static_cast<std::size_t>(count)) {
            inotify_event event = {};
            std::memcpy(&event, &bytes.at(at), sizeof event);
            const std::size_t text = at + sizeof event;
            at = text + event.len;
            if ((event.mask & IN_IGNORED) != 0)
                m_folders.remove(event.wd);
            if ((event.mask & IN_MOVED_TO) != 0 && event.len > 0 && m_folders.contains(event.wd))
                found.insert(joinedPath(m_folders.value(event.wd),
                                        pathFromBytes(QByteArray(&bytes.at(text)))));
        }
    }
    return found;
}

/// A lease for reading is given only where nobody writes. Who opens the file meanwhile waits until
/// it is given back, at once, and we are told by a signal that has no effect.
bool isBeingWritten(int file)
{
    ::fcntl(file, F_SETSIG, SIGURG);
    if (::fcntl(file, F_SETLEASE, F_RDLCK) != 0)
        return errno == EAGAIN;
    ::fcntl(file, F_SETLEASE, F_UNLCK);
    return false;
}

} // namespace pagestack
