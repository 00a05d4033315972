#include "engine/threads/Capacity.h"

#include <QFile>
#include <QList>
#include <QStringList>
#include <QThread>

#include <algorithm>
#include <array>
#include <cmath>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr std::uint64_t megabyte = 1'000'000;

    /// Of a file of the system's own, which gives a few lines at once. Every run reads a dozen.
    QString textOf(const QString& path)
    {
        const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
        if (file < 0)
            return {};
        std::array<char, 16384> text = {};
        const ssize_t size = ::read(file, text.data(), text.size());
        ::close(file);
        return QString::fromLatin1(text.data(), std::max<qsizetype>(0, size)).trimmed();
    }

    /// The folders of the group that has `controller`, and of those above it, the innermost first.
    /// In version 2 of control groups all have one tree.
    QStringList groupFolders(const QString& root, const QString& controller)
    {
        QString group;
        QString tree = root + u"/sys/fs/cgroup"_s;
        for (const QString& line : textOf(root + u"/proc/self/cgroup"_s).split(u'\n')) {
            const QString controllers = line.section(u':', 1, 1);
            if (controllers.isEmpty() && group.isNull())
                group = line.section(u':', 2);
            if (controllers.split(u',').contains(controller)) {
                group = line.section(u':', 2);
                tree = root + u"/sys/fs/cgroup/"_s + controller;
                break;
            }
        }
        QStringList folders;
        for (; group.size() > 1; group.truncate(group.lastIndexOf(u'/')))
            folders.append(tree + group);
        return folders << tree;
    }

    /// The share of processors that a folder's files leave; none where there is no limit.
    std::optional<double> quotaIn(const QString& folder)
    {
        const QStringList both = textOf(folder + u"/cpu.max"_s).split(u' ');
        const bool isNew = both.size() == 2;
        const double time
            = (isNew ? both.at(0) : textOf(folder + u"/cpu.cfs_quota_us"_s)).toDouble();
        const double period
            = (isNew ? both.at(1) : textOf(folder + u"/cpu.cfs_period_us"_s)).toDouble();
        return time > 0 && period > 0 ? std::optional(time / period) : std::nullopt;
    }

} // namespace

int usableCores(const QString& root, int cores)
{
    double share = cores;
    for (const QString& folder : groupFolders(root, u"cpu"_s))
        if (const auto quota = quotaIn(folder))
            share = std::min(share, *quota);
    return std::max(1, static_cast<int>(std::ceil(share)));
}

int usableCores() { return usableCores({}, QThread::idealThreadCount()); }

std::optional<std::uint64_t> memoryLimitBytes(const QString& root)
{
    std::optional<std::uint64_t> least;
    for (const QString& folder : groupFolders(root, u"memory"_s))
        for (const QString& name : { u"/memory.max"_s, u"/memory.limit_in_bytes"_s }) {
            bool isNumber = false;
            const std::uint64_t limit = textOf(folder + name).toULongLong(&isNumber);
            // Version 1 says "none" by a number that no machine has.
            if (isNumber && limit < std::uint64_t { 1 } << 60 && (!least || limit < *least))
                least = limit;
        }
    return least;
}

std::optional<std::uint64_t> memoryLimitBytes() { return memoryLimitBytes({}); }

int jobsWithin(int cores, std::optional<std::uint64_t> limit)
{
    if (!limit)
        return std::max(1, cores);
    const std::uint64_t first = 60 * megabyte;
    const std::uint64_t further = *limit > first ? (*limit - first) / (20 * megabyte) : 0;
    return static_cast<int>(
        std::clamp<std::uint64_t>(further + 1, 1, static_cast<std::uint64_t>(std::max(1, cores))));
}

} // namespace pagestack
