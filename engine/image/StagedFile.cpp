#include "engine/image/StagedFile.h"

#include "engine/image/FileBytes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace pagestack {

namespace {

    constexpr std::size_t appendBufferBytes = 256 * 1024;
    constexpr std::uint64_t longestGap = 4096; // that is filled rather than left to the file system
    constexpr int longestLinkChain = 40;

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
            link.truncate(length);
            if (link.startsWith('/'))
                resolved = link;
            else
                resolved = resolved.left(resolved.lastIndexOf('/') + 1) + link;
        }
        throwFileSystemError("cannot follow the symbolic link", ELOOP);
    }

    /// A name that no other staged file of this or another running program has, short enough for
    /// every file system, hidden, and plain about what it is.
    QByteArray temporaryName()
    {
        static std::atomic<unsigned> next { 0 };
        return ".pagestack-" + QByteArray::number(::getpid()) + '-'
            + QByteArray::number(next.fetch_add(1)) + ".part";
    }

} // namespace

StagedFile::StagedFile(const QString& targetPath)
{
    if (targetPath.isEmpty())
        throw std::runtime_error("the output has no name");
    m_target = resolvedTarget(targetPath);
    struct stat existing = {};
    if (::stat(m_target.constData(), &existing) == 0) {
        if (S_ISDIR(existing.st_mode))
            throw std::runtime_error("a folder of that name is in the way");
        if (!S_ISREG(existing.st_mode))
            throw std::runtime_error("what is there is no regular file");
        m_replaces = true;
        m_permissions = existing.st_mode & 0777U;
    }
    createBesideTarget();
}

QByteArray StagedFile::resolvedTarget(const QString& targetPath)
{
    return resolveLinks(QFile::encodeName(QFileInfo(targetPath).absoluteFilePath()));
}

void StagedFile::createBesideTarget()
{
    const QByteArray folder = m_target.left(m_target.lastIndexOf('/') + 1);
    const mode_t mode = m_replaces ? static_cast<mode_t>(m_permissions) : mode_t { 0666 };
    // Owner access is needed while writing, whatever the file that is replaced allows.
    const mode_t creationMode = mode | S_IRUSR | S_IWUSR;
    int error = EEXIST;
    for (int attempt = 0; attempt < 1000 && error == EEXIST; ++attempt) {
        m_temporary = folder + temporaryName();
        m_file = ::open(m_temporary.constData(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                        creationMode);
        error = m_file >= 0 ? 0 : errno;
    }
    const bool folderTakesNoFile = error == EACCES || error == EPERM || error == EROFS;
    if (folderTakesNoFile && m_replaces && ::access(m_target.constData(), W_OK) == 0) {
        m_inPlace = true;
        QByteArray name = QFile::encodeName(QDir::tempPath()) + "/pagestack-XXXXXX";
        m_file = ::mkstemp(name.data());
        if (m_file < 0)
            throwFileSystemError("cannot create a temporary file", errno);
        m_temporary = name;
        return;
    }
    if (m_file < 0) {
        m_temporary.clear();
        throwFileSystemError("cannot create a file in the folder", error);
    }
}

StagedFile::~StagedFile()
{
    if (m_file >= 0)
        ::close(m_file);
    if (!m_temporary.isEmpty())
        ::unlink(m_temporary.constData());
}

void StagedFile::write(std::span<const std::uint8_t> bytes)
{
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
    if (::ftruncate(m_file, static_cast<off_t>(size)) != 0)
        throwFileSystemError("cannot write", errno);
    m_size = size;
}

void StagedFile::settle()
{
    flush();
    m_pending = {};
    if (m_replaces && !m_inPlace && ::fsync(m_file) != 0)
        throwFileSystemError("cannot write", errno);
}

void StagedFile::commit()
{
    flush();
    if (m_inPlace) {
        replaceInPlace();
        return;
    }
    if (m_replaces) {
        if (::fchmod(m_file, static_cast<mode_t>(m_permissions)) != 0)
            throwFileSystemError("cannot keep the permissions", errno);
        // The old file is gone with the rename, so the new one must be on the disk before it.
        if (::fsync(m_file) != 0)
            throwFileSystemError("cannot write", errno);
    }
    const int file = std::exchange(m_file, -1);
    // Some file systems report a full disk only here.
    if (::close(file) != 0)
        throwFileSystemError("cannot write", errno);
    if (::rename(m_temporary.constData(), m_target.constData()) != 0)
        throwFileSystemError("cannot put the file in place", errno);
    m_temporary.clear();
}

void StagedFile::replaceInPlace()
{
    const int target = ::open(m_target.constData(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (target < 0)
        throwFileSystemError("cannot open the file to replace", errno);
    try {
        std::vector<std::uint8_t> buffer(appendBufferBytes);
        for (std::uint64_t offset = 0; offset < m_size;) {
            const auto count
                = static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), m_size - offset));
            readAt(offset, std::span(buffer).first(count));
            writeFully(target, offset, std::span<const std::uint8_t>(buffer).first(count));
            offset += count;
        }
        if (::ftruncate(target, static_cast<off_t>(m_size)) != 0 || ::fsync(target) != 0)
            throwFileSystemError("cannot write", errno);
    } catch (const std::runtime_error&) {
        ::close(target);
        throw;
    }
    if (::close(target) != 0)
        throwFileSystemError("cannot write", errno);
}

} // namespace pagestack
