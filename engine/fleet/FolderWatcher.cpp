#include "engine/fleet/FolderWatcher.h"

#include "engine/files/PosixFile.h"
#include "engine/sources/AllowedFileTypes.h"
#include "engine/sources/FolderWalk.h"
#include "engine/support/Paths.h"

#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qint64 usualPollMs = 2000;
    /// Also where events are told: a file system may be mounted over a folder.
    constexpr qint64 longestWaitMs = 60'000;
    constexpr qint64 shortestWaitMs = 10;
    constexpr int patience = 10; ///< times of rest before it is told that a file is waited for

    QString errorText(int number)
    {
        return QString::fromStdString(std::generic_category().message(number));
    }

    /// A lock on the whole file, of either kind.
    bool isLocked(int file)
    {
        struct flock range = {};
        range.l_type = F_RDLCK;
        range.l_whence = SEEK_SET;
        if (::fcntl(file, F_GETLK, &range) == 0 && range.l_type != F_UNLCK)
            return true;
        if (::flock(file, LOCK_SH | LOCK_NB) != 0)
            return errno == EWOULDBLOCK;
        ::flock(file, LOCK_UN);
        return false;
    }

} // namespace

FolderWatcher::FolderWatcher(Rules rules)
    : m_rules(std::move(rules))
{
    m_clock.start();
}

void FolderWatcher::tell(const QString& path, const QString& reason)
{
    const QString line = path + u": "_s + reason;
    if (m_told.contains(line))
        return;
    m_told.insert(line);
    m_troubles.append(line);
}

void FolderWatcher::look()
{
    const QSet<QString> movedIn = m_events.takeMovedIn();
    m_isPolling = m_rules.pollMs > 0;
    m_hasNewFolders = false;
    m_left.clear();
    for (const QString& folder : m_rules.leftOut)
        if (const auto identity = fileIdentity(QFile::encodeName(folder)))
            m_left.insert(*identity);
    for (Seen& seen : m_seen)
        seen.isThere = false;
    walk(m_rules.folder, movedIn);
    m_seen.removeIf([](const auto& entry) { return !entry.value().isThere; });
}

void FolderWatcher::walk(const QString& folder, const QSet<QString>& movedIn)
{
    // Before it is read: what comes then is either read or told.
    if (m_rules.pollMs == 0 && !m_events.add(folder))
        m_isPolling = true;
    if (!m_known.contains(folder))
        m_hasNewFolders = true;
    m_known.insert(folder);
    FolderWalk entries(folder, FolderWalk::Links::Left, false, [](const QString& name) {
        return hasAllowedFileType(name) || hasOddFileType(name);
    });
    QStringList below;
    while (const auto entry = entries.next()) {
        if (entry->isFolder && entry->path == folder)
            tell(folder, entry->fault);
        else if (entry->isFolder && m_rules.isRecursive && !entry->isLink && isPath(entry->path))
            below.append(entry->path);
        else if (!entry->isFolder && !entry->fault.isEmpty())
            tell(QString(entry->path).remove(QChar::Null), entry->fault);
        else if (!entry->isFolder && hasOddFileType(entry->path))
            tell(entry->path, u"it is left there for the unusual case of its ending"_s);
        else if (!entry->isFolder)
            see(entry->path, movedIn.contains(entry->path));
    }
    for (const QString& path : std::as_const(below))
        if (const auto identity = fileIdentity(QFile::encodeName(path));
            identity && !m_left.contains(*identity))
            walk(path, movedIn);
}

void FolderWatcher::see(const QString& path, bool isMovedIn)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0)
        return;
    if (!S_ISREG(status.st_mode))
        return tell(path, u"it is no regular file, and stays there"_s);
    if (isSidecar(path))
        return;
    const FileState state(status);
    Seen& seen = m_seen[path];
    if (seen.state != state)
        seen = { .state = state, .sinceMs = m_clock.elapsed() };
    seen.isMovedIn = seen.isMovedIn || isMovedIn;
    seen.isThere = true;
}

/// Whether it can be read, is as it was seen, and nobody else is at work on it. On a network file
/// system only an open file has what is true of it now.
bool FolderWatcher::isFree(const QString& path, const Seen& seen, QString& why) const
{
    const int file = retryInterrupted([&] {
        return ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    });
    if (file < 0) {
        why = errorText(errno);
        return false;
    }
    const auto close = qScopeGuard([file] { ::close(file); });
    struct stat status = {};
    if (::fstat(file, &status) != 0 || FileState(status) != seen.state)
        return false;
    if (isLocked(file) || isBeingWritten(file))
        why = u"another program has it"_s;
    return why.isEmpty();
}

QList<CompleteFile> FolderWatcher::complete()
{
    QList<CompleteFile> found;
    m_waiting = 0;
    for (auto entry = m_seen.cbegin(); entry != m_seen.cend(); ++entry) {
        const qint64 restMs = m_clock.elapsed() - entry->sinceMs;
        QString why;
        if ((entry->isMovedIn || restMs >= m_rules.settleMs) && isFree(entry.key(), *entry, why)) {
            found.append({ entry.key(), entry->state });
            continue;
        }
        ++m_waiting;
        if (!why.isEmpty() && restMs > patience * m_rules.settleMs)
            tell(entry.key(), why + u"; it is waited for"_s);
    }
    std::ranges::sort(found, [](const CompleteFile& a, const CompleteFile& b) {
        return a.state.modifiedNs != b.state.modifiedNs ? a.state.modifiedNs < b.state.modifiedNs
                                                        : naturallyLess(a.path, b.path);
    });
    return found;
}

qint64 FolderWatcher::nextLookMs() const
{
    qint64 wait = m_rules.pollMs > 0 ? m_rules.pollMs : m_isPolling ? usualPollMs : longestWaitMs;
    if (m_hasNewFolders)
        wait = 0; // what came before the events did
    for (const Seen& seen : m_seen) {
        const qint64 left = seen.sinceMs + m_rules.settleMs - m_clock.elapsed();
        if (!seen.isMovedIn && left > 0)
            wait = std::min(wait, left);
        else if (m_waiting > 0)
            wait = std::min(wait, m_rules.settleMs); // for another program to end with it
    }
    return std::max(wait, shortestWaitMs);
}

} // namespace pagestack
