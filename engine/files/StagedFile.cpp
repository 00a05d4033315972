#include "engine/files/StagedFile.h"

#include "engine/files/PosixFile.h"
#include "engine/files/StagedNames.h"
#include "engine/support/Paths.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

namespace pagestack {

namespace {

    constexpr std::size_t appendBufferBytes = std::size_t { 256 } * 1024;
    constexpr std::uint64_t longestGap = 4096; // that is filled rather than left to the file system
    constexpr int longestLinkChain = 40;

    /// The memory that a staged file of this thread has given back, or none: small pages follow
    /// each other by the thousand, and to have the system clear the memory of each takes as long as
    /// to fill it.
    std::vector<std::uint8_t>& spareBuffer()
    {
        thread_local std::vector<std::uint8_t> spare;
        return spare;
    }

    void keepForNext(std::vector<std::uint8_t> buffer)
    {
        buffer.clear();
        if (buffer.capacity() > spareBuffer().capacity())
            spareBuffer() = std::move(buffer);
    }

    /// In a folder that others may write to anybody could lead us to one of our own files, so that
    /// a link counts there only when it is ours or belongs to the folder's owner.
    void checkLink(const QByteArray& path)
    {
        struct stat link = {};
        struct stat folder = {};
        const QByteArray folderPath = path.left(path.lastIndexOf('/') + 1);
        if (::lstat(path.constData(), &link) != 0 || ::stat(folderPath.constData(), &folder) != 0)
            return; // It has gone; the next step will say what is wrong.
        const bool isShared = (folder.st_mode & (S_IWGRP | S_IWOTH)) != 0;
        if (isShared && link.st_uid != ::geteuid() && link.st_uid != folder.st_uid)
            throw std::runtime_error(
                "the symbolic link there belongs to another user, in a folder open to others");
    }

    /// The file that a write to `path` would end in: links are followed also when they dangle.
    QByteArray resolveLinks(const QByteArray& path)
    {
        QByteArray resolved = path;
        for (int step = 0; step < longestLinkChain; ++step) {
            QByteArray link(4096, '\0');
            const ssize_t length
                = ::readlink(resolved.constData(), link.data(), static_cast<size_t>(link.size()));
            if (length < 0)
                return resolved;
            checkLink(resolved);
            link.truncate(length);
            if (link.startsWith('/'))
                resolved = link;
            else
                resolved = resolved.left(resolved.lastIndexOf('/') + 1) + link;
        }
        throwFileSystemError("cannot follow the symbolic link", ELOOP);
    }

} // namespace

StagedFile::StagedFile(const QString& targetPath)
{
    if (targetPath.isEmpty())
        throw std::runtime_error("the output has no name");
    const QByteArray named = QFile::encodeName(absolutePath(targetPath));
    m_target = named;
    struct stat status = {};
    const bool isThere = ::lstat(named.constData(), &status) == 0;
    if (isThere && S_ISLNK(status.st_mode)) {
        m_target = resolveLinks(named);
        m_isBehindLink = m_target != named;
    }
    if (isThere)
        lookAtTarget();
    m_inPlace = !createBesideTarget();
    if (m_inPlace)
        m_file = openUnnamedFile();
}

bool StagedFile::isWriteProtected(const QByteArray& path)
{
    struct stat status = {};
    if (::geteuid() == 0)
        return ::stat(path.constData(), &status) == 0 && (status.st_mode & S_IWUSR) == 0;
    return ::access(path.constData(), W_OK) != 0 && (errno == EACCES || errno == EPERM);
}

void StagedFile::lookAtTarget()
{
    struct stat existing = {};
    if (::stat(m_target.constData(), &existing) != 0)
        return;
    if (S_ISDIR(existing.st_mode))
        throw std::runtime_error("a folder of that name is in the way");
    if (!S_ISREG(existing.st_mode))
        throw std::runtime_error("what is there is no regular file");
    if (isWriteProtected(m_target))
        throw std::runtime_error("the file there is write-protected");
    m_replaces = true;
    m_permissions = existing.st_mode & 0777U;
    m_owner = existing.st_uid;
    m_group = existing.st_gid;
}

QByteArray StagedFile::resolvedTarget(const QString& targetPath)
{
    return resolveLinks(QFile::encodeName(absolutePath(targetPath)));
}

/// False when the folder takes no new file but what is at the target can be written to.
bool StagedFile::createBesideTarget()
{
    const QByteArray folder = m_target.left(m_target.lastIndexOf('/') + 1);
    // Until it belongs to the same group, nobody else may read what replaces a file.
    const auto mode = m_replaces ? static_cast<mode_t>(m_permissions & 0700U) : mode_t { 0666 };
    int error = EEXIST;
    for (int attempt = 0; attempt < 1000 && error == EEXIST; ++attempt) {
        m_temporary = folder + stagedName();
        m_file = retryInterrupted([&] {
            return ::open(m_temporary.constData(),
                          O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        });
        if (m_file >= 0 && ownStagedFile(m_file))
            return true;
        error = m_file < 0 ? errno : EEXIST;
        if (m_file >= 0) // Who took it for a leftover removes it; the name may be another's by now.
            ::close(std::exchange(m_file, -1));
    }
    m_temporary.clear();
    const bool folderTakesNoFile = error == EACCES || error == EPERM || error == EROFS;
    if (folderTakesNoFile && m_replaces && ::access(m_target.constData(), W_OK) == 0)
        return false;
    throwFileSystemError("cannot create a file in the folder", error);
}

StagedFile::~StagedFile()
{
    // In this order: once it is closed, its name may be another program's.
    remove();
    if (m_file >= 0)
        ::close(m_file);
    keepForNext(std::move(m_pending));
}

void StagedFile::write(std::span<const std::uint8_t> bytes)
{
    if (m_pending.capacity() == 0)
        m_pending.swap(spareBuffer());
    if (m_pending.size() + bytes.size() > appendBufferBytes)
        flush();
    if (bytes.size() >= appendBufferBytes)
        writeFully(m_file, m_size, bytes);
    else
        m_pending.insert(m_pending.end(), bytes.begin(), bytes.end());
    m_size += bytes.size();
}

void StagedFile::flush()
{
    if (m_pending.empty())
        return;
    writeFully(m_file, m_size - m_pending.size(), m_pending);
    m_pending.clear();
}

void StagedFile::writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes)
{
    if (isPending(offset, bytes.size())) {
        std::copy(bytes.begin(), bytes.end(), pendingAt(offset));
        return;
    }
    if (offset > m_size && offset - m_size <= longestGap)
        write(std::vector<std::uint8_t>(offset - m_size));
    if (offset == m_size) {
        write(bytes);
        return;
    }
    flush();
    writeFully(m_file, offset, bytes);
    m_size = std::max(m_size, offset + bytes.size());
}

bool StagedFile::isPending(std::uint64_t offset, std::size_t count) const
{
    return offset >= m_size - m_pending.size() && offset + count <= m_size;
}

std::vector<std::uint8_t>::iterator StagedFile::pendingAt(std::uint64_t offset)
{
    return m_pending.end() - static_cast<std::ptrdiff_t>(m_size - offset);
}

void StagedFile::readAt(std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    if (isPending(offset, bytes.size())) {
        std::copy_n(pendingAt(offset), bytes.size(), bytes.begin());
        return;
    }
    flush();
    readFully(m_file, offset, bytes);
}

void StagedFile::resize(std::uint64_t size)
{
    flush();
    resizeFile(m_file, size);
    m_size = size;
}

std::uint64_t StagedFile::reserve(std::uint64_t bytes)
{
    flush();
    return std::exchange(m_size, m_size + bytes);
}

void StagedFile::fill(std::uint64_t offset, std::span<const std::uint8_t> bytes) const
{
    writeFully(m_file, offset, bytes);
}

std::uint64_t StagedFile::freeBytes() const
{
    struct statvfs disk = {};
    const bool isTold = ::fstatvfs(m_file, &disk) == 0;
    return isTold ? std::uint64_t { disk.f_bavail } * disk.f_frsize : 0;
}

int StagedFile::openForReading()
{
    flush();
    const int file = ::fcntl(m_file, F_DUPFD_CLOEXEC, 0);
    if (file < 0)
        throwFileSystemError("cannot read", errno);
    return file;
}

void StagedFile::settle()
{
    flush();
    keepForNext(std::exchange(m_pending, {}));
    if (m_replaces && !m_inPlace)
        syncToDisk(m_file);
}

} // namespace pagestack
