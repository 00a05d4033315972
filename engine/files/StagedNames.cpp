#include "engine/files/StagedNames.h"

#include "engine/files/PosixFile.h"

#include <QFile>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace pagestack {

namespace {

    constexpr char start[] = ".pagestack-";
    constexpr char end[] = ".part";

    // U+00E4 in one piece, and as a letter and a mark: some file systems hand out the other one.
    constexpr char composed[] = "\xC3\xA4";
    constexpr char decomposed[] = "a\xCC\x88";

    bool isNumber(const QByteArray& text)
    {
        return !text.isEmpty() && text.size() < 20
            && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    }

    struct FolderCloser
    {
        void operator()(DIR* folder) const noexcept { ::closedir(folder); }
    };

    /// Whether `name` still leads to the open `file`.
    bool leadsTo(int folder, const char* name, int file)
    {
        struct stat opened = {};
        struct stat named = {};
        return ::fstat(file, &opened) == 0 && S_ISREG(opened.st_mode)
            && ::fstatat(folder, name, &named, AT_SYMLINK_NOFOLLOW) == 0
            && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
    }

    void removeUnlessOwned(int folder, const char* name)
    {
        // Neither a link nor a pipe that someone put there leads anywhere.
        constexpr int flags = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
        // On network file systems a file must be open for writing to be locked by one.
        int file = ::openat(folder, name, O_RDWR | flags);
        if (file < 0)
            file = ::openat(folder, name, O_RDONLY | flags);
        if (file < 0)
            return;
        if (::flock(file, LOCK_EX | LOCK_NB) == 0 && leadsTo(folder, name, file))
            ::unlinkat(folder, name, 0);
        ::close(file);
    }

} // namespace

QByteArray stagedName()
{
    static std::atomic<unsigned> next { 0 };
    return start + QByteArray::number(::getpid()) + '-' + QByteArray::number(next.fetch_add(1))
        + end;
}

QByteArray stagedProbeName()
{
    return stagedName().chopped(qsizetype { sizeof end - 1 }) + '-' + composed + end;
}

bool isStagedName(const QByteArray& name)
{
    if (!name.startsWith(start) || !name.endsWith(end))
        return false;
    const qsizetype length = name.size() - qsizetype { sizeof start - 1 + sizeof end - 1 };
    QList<QByteArray> numbers = name.mid(sizeof start - 1, length).split('-');
    if (numbers.size() == 3 && (numbers[2] == composed || numbers[2] == decomposed))
        numbers.removeLast();
    return numbers.size() == 2 && isNumber(numbers[0]) && isNumber(numbers[1]);
}

bool ownStagedFile(int file)
{
    if (retryInterrupted([&] { return ::flock(file, LOCK_EX | LOCK_NB); }) != 0)
        return errno != EWOULDBLOCK; // without locks nobody can take it for a leftover
    struct stat status = {};
    return ::fstat(file, &status) == 0 && status.st_nlink > 0;
}

void removeLeftStagedFiles(const QString& folder, const QSet<QByteArray>& kept)
{
    const std::unique_ptr<DIR, FolderCloser> entries(
        ::opendir(QFile::encodeName(folder).constData()));
    if (!entries)
        return;
    // Of a stream of this call's own: NOLINTNEXTLINE(concurrency-mt-unsafe)
    while (const dirent* entry = ::readdir(entries.get())) {
        const auto name = QByteArray::fromRawData(entry->d_name, qsizetype(qstrlen(entry->d_name)));
        if (isStagedName(name) && !kept.contains(name))
            removeUnlessOwned(::dirfd(entries.get()), entry->d_name);
    }
}

} // namespace pagestack
