#include "engine/files/FreeName.h"
#include "engine/files/PosixFile.h"
#include "engine/files/StagedFile.h"

#include <QScopeGuard>

#include <cstdio>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#ifdef __linux__
#include <sys/xattr.h>
#endif

// How a staged file gets to its target. What is there is lost only once the new file is complete.

namespace pagestack {

namespace {

    /// Gives each of two files the other's name, in one step. False, with nothing changed, where
    /// the file system knows no such step or one of the names leads to nothing.
    bool swapNames(const QByteArray& one, const QByteArray& other)
    {
        const int error = exchangeNames(one, other);
        if (error != 0 && !isUnknownCall(error) && error != ENOENT)
            throwFileSystemError("cannot put the file in place", error);
        return error == 0;
    }

    /// Renames the file `from` to `to` if nothing has that name; false when something has. Where
    /// the file system knows no such step, the two are one after the other.
    bool takeFreeName(const QByteArray& from, const QByteArray& to)
    {
        const int error = renameToFreeName(from, to);
        if (error != 0 && error != EEXIST)
            throwFileSystemError("cannot put the file in place", error);
        return error == 0;
    }

    constexpr std::uint64_t bufferBytes = std::uint64_t { 256 } * 1024;

    void copyBytes(int from, int to, std::uint64_t offset, std::uint64_t end)
    {
        std::vector<std::uint8_t> buffer;
        for (; offset < end; offset += buffer.size()) {
            buffer.resize(std::min(bufferBytes, end - offset));
            readFully(from, offset, buffer);
            writeFully(to, offset, buffer);
        }
    }

    std::uint64_t sizeOf(int file)
    {
        struct stat status = {};
        if (::fstat(file, &status) != 0)
            throwFileSystemError("cannot read", errno);
        return static_cast<std::uint64_t>(status.st_size);
    }

    /// False when it cannot be set: only the owner of a file may, and who may write it all the same
    /// is not to lose its content for that.
    bool setDate(int file, std::int64_t modifiedNs)
    try {
        setModificationTime(file, modifiedNs);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }

    /// Gives the file at `target`, which is no link, the first `size` bytes of the open file
    /// `from`: for folders that take no new file. The old content is kept aside and put back when
    /// that fails; a program that is killed in the middle leaves the file torn. `lastLook` is
    /// called right before the file is touched, and may throw. False when the date could not be
    /// set.
    bool replaceContent(const QByteArray& target, int from, std::uint64_t size,
                        const std::function<void()>& lastLook,
                        const std::optional<std::int64_t>& modifiedNs)
    {
        const int to = retryInterrupted(
            [&] { return ::open(target.constData(), O_RDWR | O_NOFOLLOW | O_CLOEXEC); });
        if (to < 0)
            throwFileSystemError("cannot open the file to replace", errno);
        const auto closeTarget = qScopeGuard([to] { ::close(to); });
        const int old = openUnnamedFile();
        const auto closeOld = qScopeGuard([old] { ::close(old); });
        const std::uint64_t oldSize = sizeOf(to);
        copyBytes(to, old, 0, oldSize);
        lastLook();
        bool isTouched = false;
        try {
            // What it grows by comes first: a disk without room for it is noticed in time.
            copyBytes(from, to, oldSize, size);
            isTouched = true;
            copyBytes(from, to, 0, std::min(oldSize, size));
            resizeFile(to, size);
            const bool isDated = !modifiedNs || setDate(to, *modifiedNs);
            syncToDisk(to);
            checkAtClose(to);
            return isDated;
        } catch (const std::exception& error) {
            try {
                copyBytes(old, to, 0, isTouched ? oldSize : 0);
                resizeFile(to, oldSize);
                syncToDisk(to);
                checkAtClose(to);
            } catch (const std::exception&) {
                throw std::runtime_error(
                    error.what()
                    + std::string("; what was there is damaged, since it could not "
                                  "be put back"));
            }
            throw;
        }
    }

#ifdef __linux__
    constexpr char listName[] = "system.posix_acl_access";

    /// Whether the error says that there is no list, or that the file system has none.
    bool isNone(int error) { return error == ENODATA || error == ENOTSUP || error == ENOSYS; }

    /// Gives the open file the access control list (POSIX ACL) of the file at `path`, or none when
    /// that has none, whatever the folder makes new files inherit. False when it cannot.
    bool keepAccessList(const QByteArray& path, int fileDescriptor)
    {
        QByteArray list(65536, Qt::Uninitialized); // no attribute is longer
        const ssize_t size = ::getxattr(path.constData(), listName, list.data(),
                                        static_cast<std::size_t>(list.size()));
        if (size > 0)
            return ::fsetxattr(fileDescriptor, listName, list.constData(),
                               static_cast<std::size_t>(size), 0)
                == 0;
        if (size < 0 && !isNone(errno))
            return false;
        return ::fremovexattr(fileDescriptor, listName) == 0 || isNone(errno);
    }
#else
    bool keepAccessList(const QByteArray&, int) { return true; }
#endif

    /// Where there is nothing any more, nothing is lost either.
    void checkUnchanged(const QByteArray& target, const std::optional<FileState>& expected)
    {
        const std::optional<FileState> found = expected ? fileState(target) : std::nullopt;
        if (found && found != expected)
            throw StagedFile::TargetChanged();
    }

} // namespace

QString StagedFile::dateRemark()
{
    return QStringLiteral(
        "the date is not kept, since the file that was replaced is another user's");
}

void StagedFile::commit(Existing existing, const std::optional<FileState>& expected)
{
    if (m_isAhead)
        return leaveInPlace();
    flush();
    if (existing == Existing::Kept && m_isBehindLink)
        throw NameTaken();
    if (!m_replaces && !m_inPlace && takeName())
        return leaveInPlace();
    lookAtTarget(); // by now there is something
    if (existing == Existing::Kept && m_replaces)
        throw NameTaken();
    if (m_inPlace) {
        m_isDateKept = replaceContent(
            m_target, m_file, m_size, [&] { checkUnchanged(m_target, expected); }, m_modifiedNs);
        return;
    }
    if (m_modifiedNs)
        setModificationTime(m_file, *m_modifiedNs);
    if (m_replaces) {
        keepPermissions();
        // The old file is gone with the rename, so the new one must be on the disk before it.
        syncToDisk(m_file);
    }
    checkAtClose(m_file);
    putInPlace(existing, expected);
    leaveInPlace();
}

/// For a name that was free when the file was begun; false when it is no more. Without another look
/// at the target: thousands of files of a page each have none of them.
bool StagedFile::takeName()
{
    if (m_modifiedNs)
        setModificationTime(m_file, *m_modifiedNs);
    checkAtClose(m_file);
    return takeFreeName(m_temporary, m_target);
}

void StagedFile::leaveInPlace()
{
    m_isAhead = false;
    m_temporary.clear();
    ::close(std::exchange(m_file, -1));
}

void StagedFile::putAhead()
{
    flush();
    if (!isNew() || m_inPlace || m_isAhead || !takeName())
        return;
    m_isAhead = true;
    m_temporary.clear();
}

bool StagedFile::isGone() const
{
    struct stat own = {};
    return m_isAhead && (::fstat(m_file, &own) != 0 || own.st_nlink == 0);
}

/// What was put ahead can have been replaced or moved away by others since.
void StagedFile::remove()
{
    struct stat own = {};
    struct stat there = {};
    if (!m_temporary.isEmpty())
        ::unlink(m_temporary.constData());
    else if (m_isAhead && ::fstat(m_file, &own) == 0 && ::lstat(m_target.constData(), &there) == 0
             && own.st_dev == there.st_dev && own.st_ino == there.st_ino)
        ::unlink(m_target.constData());
}

/// Still open, and so still owned: nobody takes it for a leftover.
void StagedFile::putInPlace(Existing existing, const std::optional<FileState>& expected)
{
    if (existing == Existing::Kept) {
        if (!takeFreeName(m_temporary, m_target))
            throw NameTaken();
        return;
    }
    checkUnchanged(m_target, expected);
    if (expected && swapIn(*expected))
        return;
    const auto rename = [&] { return ::rename(m_temporary.constData(), m_target.constData()); };
    if (retryInterrupted(rename) != 0)
        throwFileSystemError("cannot put the file in place", errno);
}

/// What comes to the target after the last look is still there when the names are swapped, and gets
/// its own back. False where the file system knows no such step; nothing is changed then.
bool StagedFile::swapIn(const FileState& expected)
{
    if (!swapNames(m_temporary, m_target))
        return false;
    // The swap itself changes the time at which the description was changed.
    const std::optional<FileState> old = fileState(m_temporary);
    if (old && old->identity == expected.identity && old->sizeBytes == expected.sizeBytes
        && old->modifiedNs == expected.modifiedNs) {
        ::unlink(m_temporary.constData());
        return true;
    }
    // Until it is back, the temporary name is that of the other program's file.
    const QByteArray temporary = std::exchange(m_temporary, {});
    if (swapNames(temporary, m_target))
        m_temporary = temporary;
    else
        takeFreeName(temporary, m_target); // the new file is gone from there
    throw TargetChanged();
}

/// Owner, group and permissions of the file that is replaced. Who may not give the file away keeps
/// it, and where the group cannot be kept another one gets no more rights than everybody has.
/// Without its access list the group's bits, which are the most that a list gives, would mean the
/// group's own.
void StagedFile::keepPermissions()
{
    unsigned permissions = m_permissions;
    struct stat status = {};
    const bool isOther
        = ::fstat(m_file, &status) != 0 || status.st_uid != m_owner || status.st_gid != m_group;
    if (isOther && ::fchown(m_file, m_owner, m_group) != 0
        && ::fchown(m_file, static_cast<uid_t>(-1), m_group) != 0)
        permissions &= ~0070U | (permissions & 0007U) << 3U;
    if (!keepAccessList(m_target, m_file))
        permissions &= ~0070U;
    if (::fstat(m_file, &status) == 0 && (status.st_mode & 0777U) == permissions)
        return;
    if (retryInterrupted([&] { return ::fchmod(m_file, static_cast<mode_t>(permissions)); }) != 0)
        throwFileSystemError("cannot keep the permissions", errno);
}

} // namespace pagestack
