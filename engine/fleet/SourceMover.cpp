#include "engine/fleet/SourceMover.h"

#include "engine/files/FileDigest.h"
#include "engine/files/FileState.h"
#include "engine/files/FreeName.h"
#include "engine/files/PosixFile.h"
#include "engine/files/StagedFile.h"
#include "engine/fleet/RunState.h"
#include "engine/support/Paths.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Whether something has a name cannot be said.
    class NotLooked : public std::system_error
    {
    public:
        explicit NotLooked(int error)
            : std::system_error(error, std::generic_category(), "no name can be found for it")
        {
        }
        bool isTooLong() const { return code().value() == ENAMETOOLONG; }
    };

    bool isAnythingAt(const QString& path)
    {
        struct stat status = {};
        if (::lstat(QFile::encodeName(path).constData(), &status) == 0)
            return true;
        if (errno == ENOENT)
            return false;
        throw NotLooked(errno);
    }

    /// Without its last character.
    QString shortened(const QString& text)
    {
        const bool isPair = text.size() > 1 && text.back().isLowSurrogate();
        return text.chopped(isPair ? 2 : 1);
    }

    void syncFolder(const QString& folder)
    {
        const int file = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_CLOEXEC);
        if (file < 0)
            return;
        ::fsync(file); // some file systems refuse it for folders
        ::close(file);
    }

    FileDigest digestOfOpen(int file, std::uint64_t size)
    {
        return digestOf(size, [&](std::uint64_t offset, std::span<std::uint8_t> bytes) {
            readFully(file, offset, bytes);
        });
    }

    /// False when something is at `to`.
    bool copyFile(const QString& from, const QString& to, const FileState& state)
    {
        constexpr std::size_t bufferBytes = std::size_t { 256 } * 1024;
        const int source = retryInterrupted(
            [&] { return ::open(QFile::encodeName(from).constData(), O_RDONLY | O_CLOEXEC); });
        if (source < 0)
            throwFileSystemError("it cannot be moved", errno);
        const auto closeSource = qScopeGuard([source] { ::close(source); });
        struct stat status = {};
        if (::fstat(source, &status) != 0)
            throwFileSystemError("it cannot be moved", errno);
        if (!isSameFile(FileState(status), state))
            throw std::runtime_error("it has changed before it was moved");
        StagedFile copy(to);
        std::vector<std::uint8_t> buffer(bufferBytes);
        std::uint64_t offset = 0;
        while (const std::size_t count = readUpTo(source, offset, buffer)) {
            copy.write(std::span(buffer).first(count));
            offset += count;
        }
        copy.setModified(FileState(status).modifiedNs);
        copy.settle();
        const int written = copy.openForReading();
        const auto closeWritten = qScopeGuard([written] { ::close(written); });
        ::fchmod(written, status.st_mode & 0777U); // as far as the file system knows that
        syncToDisk(written);
        if (offset != static_cast<std::uint64_t>(status.st_size)
            || digestOfOpen(source, offset) != digestOfOpen(written, offset))
            throw std::runtime_error("it cannot be moved: its copy is not the same");
        if (fileState(QFile::encodeName(from)) != FileState(status))
            throw std::runtime_error("it has changed while it was copied");
        try {
            copy.commit(StagedFile::Existing::Kept);
        } catch (const StagedFile::NameTaken&) {
            return false;
        }
        syncFolder(folderPart(to));
        return true;
    }

    bool isFileAt(const QString& path, const FileState& state)
    {
        const auto found = fileState(QFile::encodeName(path));
        return found && isSameFile(*found, state);
    }

    /// The same whenever it is asked for: a program that was ended is gone on with.
    QString asidePath(const QString& path)
    {
        constexpr qsizetype digits = 24;
        const QByteArray hash = QCryptographicHash::hash(QFile::encodeName(lastPathComponent(path)),
                                                         QCryptographicHash::Sha256);
        return joinedPath(folderPart(path),
                          u".pagestack-moved-"_s + QString::fromLatin1(hash.toHex().left(digits)));
    }

    /// Has the file at `from` come back to `path`, or to a name beside it when that is taken.
    void putBack(const QString& from, const QString& path)
    {
        QString to = path;
        for (;;) {
            const int error = renameToFreeName(QFile::encodeName(from), QFile::encodeName(to));
            if (error == 0)
                return;
            if (error != EEXIST)
                throwFileSystemError(
                    ("it has come anew, and stays at " + from.toStdString()).c_str(), error);
            to = freePath(folderPart(path), lastPathComponent(path), false);
        }
    }

} // namespace

QString notePath(const QString& path) { return path + u".txt"_s; }

QString freePath(const QString& folder, const QString& name, bool hasNote)
{
    const QString extension = pathExtension(name);
    const QString ending = extension.isEmpty() ? QString() : u'.' + extension;
    QString stem = name.chopped(ending.size());
    for (int number = 1;;) {
        const QString numbered = number == 1 ? stem : u"%1-%2"_s.arg(stem).arg(number);
        QString path = joinedPath(folder, numbered + ending);
        try {
            if (!isAnythingAt(path) && !(hasNote && isAnythingAt(notePath(path))))
                return path;
            ++number;
        } catch (const NotLooked& error) {
            if (!error.isTooLong() || shortened(stem).isEmpty())
                throw;
            stem = shortened(stem);
        }
    }
}

bool isSameFile(const FileState& a, const FileState& b)
{
    return a.identity == b.identity && a.sizeBytes == b.sizeBytes && a.modifiedNs == b.modifiedNs;
}

bool areSameFiles(const QString& a, const QString& b)
{
    const auto first = fileState(QFile::encodeName(a));
    const auto second = fileState(QFile::encodeName(b));
    if (!first || !second || first->sizeBytes != second->sizeBytes)
        return false;
    if (first->identity == second->identity)
        return true;
    const auto digest = digestOfFile(a);
    return digest && digest == digestOfFile(b);
}

void removeMoved(const QString& path, const FileState& state)
{
    const QString aside = asidePath(path);
    const int error = renameToFreeName(QFile::encodeName(path), QFile::encodeName(aside));
    if (error == ENOENT)
        return;
    if (error != 0)
        throwFileSystemError("it cannot be removed", error);
    if (!isFileAt(aside, state))
        return putBack(aside, path);
    if (::unlink(QFile::encodeName(aside).constData()) != 0 && errno != ENOENT)
        throwFileSystemError("it cannot be removed", errno);
    // Where a rename is two steps, the first name may be there still.
    if (isFileAt(path, state))
        throw std::runtime_error("it cannot be removed");
}

void settleAside(const QString& path, const QString& to, const FileState& state)
{
    const QString aside = asidePath(path);
    if (!fileState(QFile::encodeName(aside)))
        return;
    if (!isFileAt(aside, state) || !areSameFiles(aside, to))
        putBack(aside, path);
    else if (::unlink(QFile::encodeName(aside).constData()) != 0 && errno != ENOENT)
        throwFileSystemError("it cannot be removed", errno);
}

MoveEnd moveFile(const QString& from, const QString& to, const FileState& state)
{
    const int error = renameToFreeName(QFile::encodeName(from), QFile::encodeName(to));
    if (error == EEXIST)
        return MoveEnd::NameTaken;
    if (error == EXDEV) {
        if (!copyFile(from, to, state))
            return MoveEnd::NameTaken;
        removeMoved(from, state);
        return MoveEnd::Moved;
    }
    if (error != 0)
        throwFileSystemError("it cannot be moved", error);
    if (!isFileAt(to, state)) {
        putBack(to, from);
        return MoveEnd::OtherFile;
    }
    // Where there is no step for both, the first name may be there still.
    if (isFileAt(from, state))
        removeMoved(from, state);
    return MoveEnd::Moved;
}

} // namespace pagestack
