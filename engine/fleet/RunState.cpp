#include "engine/fleet/RunState.h"

#include "engine/files/PosixFile.h"
#include "engine/fleet/JsonLines.h"

#include <QFile>
#include <QJsonArray>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    [[noreturn]] void refuseState(const QString& path, const QString& why)
    {
        throw std::runtime_error(u"the state %1 %2"_s.arg(path, why).toStdString());
    }

    std::uint64_t sizeOf(int file)
    {
        struct stat status = {};
        return ::fstat(file, &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
    }

} // namespace

std::optional<FileDigest> digestIn(const QJsonObject& members)
{
    const QByteArray digits = members.value(u"sha256").toString().toLatin1();
    const QByteArray bytes = QByteArray::fromHex(digits);
    FileDigest digest;
    if (!members.value(u"size").isDouble() || digits.size() != 64
        || bytes.size() != static_cast<qsizetype>(digest.sha256.size()))
        return std::nullopt;
    digest.sizeBytes = static_cast<std::uint64_t>(members.value(u"size").toInteger());
    std::ranges::copy(bytes, digest.sha256.begin());
    return digest;
}

RunState::RunState(const QString& path, const QString& plan, const QString& options)
{
    m_file = retryInterrupted([&] {
        return ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC,
                      0644);
    });
    if (m_file < 0)
        throwFileSystemError("the state cannot be opened", errno);
    try {
        struct stat status = {};
        if (::fstat(m_file, &status) == 0 && !S_ISREG(status.st_mode))
            refuseState(path, u"is no regular file"_s);
        const int locked = retryInterrupted([&] { return ::flock(m_file, LOCK_EX | LOCK_NB); });
        if (locked != 0 && errno != EWOULDBLOCK)
            throwFileSystemError("the state cannot be locked", errno);
        if (locked != 0)
            throw StateInUse(
                u"the state %1 is that of a run that is still going on: %2"_s
                    .arg(path, QString::fromStdString(std::generic_category().message(EBUSY)))
                    .toStdString());
        read(path, plan, options);
    } catch (...) {
        ::close(m_file);
        throw;
    }
}

RunState::~RunState() { ::close(m_file); }

void RunState::read(const QString& path, const QString& plan, const QString& options)
{
    JsonLines lines(path);
    bool isFirst = true;
    while (const auto event = lines.next()) {
        if (std::exchange(isFirst, false)
            && (event->value(u"type") != u"run"_s || lines.damagedLines() > 1))
            refuseState(path, u"is none: it holds something else"_s);
        if (event->value(u"type") == u"run"_s
            && (event->value(u"plan") != plan || event->value(u"options") != options))
            refuseState(path, u"is that of another plan or of other options"_s);
        take(*event);
    }
    // A line that a kill has cut off must not swallow the next one.
    std::array<std::uint8_t, 1> last {};
    const std::uint64_t size = sizeOf(m_file);
    if (size == 0)
        return;
    readFully(m_file, 0, last); // nothing but a line that was cut off, or no state at all
    if (isFirst && last.front() != '{')
        refuseState(path, u"is none: it holds something else"_s);
    readFully(m_file, size - 1, last);
    if (last.front() != '\n' && ::write(m_file, "\n", 1) != 1)
        throwFileSystemError("the state cannot be written", errno);
}

void RunState::take(const QJsonObject& event)
{
    const QString type = event.value(u"type").toString();
    if (type != u"begin" && type != u"page" && type != u"source")
        return;
    Known& known = m_known[event.value(u"source").toString()];
    if (type == u"page") {
        const int page = event.value(u"page").toInt();
        known.written.remove(page);
        if (const auto digest = digestIn(event))
            known.written.insert(page, *digest);
        return;
    }
    if (type == u"source") {
        known.isDone = event.value(u"outcome") == u"done"_s;
        known.gathered = digestIn(event.value(u"output").toObject());
        return;
    }
    const auto digest = digestIn(event);
    const QString pages = event.value(u"pages").toString();
    if (digest != known.digest)
        known.written.clear(); // they are of another file
    for (const QJsonValue path : event.value(u"makes").toArray())
        known.made.insert(path.toString());
    known.pages = pages;
    known.digest = digest;
    known.isDone = false;
    known.gathered.reset();
}

const RunState::Known* RunState::known(const QString& path) const
{
    const auto found = m_known.constFind(path);
    return found == m_known.cend() ? nullptr : &*found;
}

void RunState::append(const QJsonObject& event)
{
    const QByteArray line = jsonLine(event);
    qsizetype done = 0;
    while (done < line.size()) {
        const ssize_t written = retryInterrupted([&] {
            return ::write(m_file, line.constData() + done,
                           static_cast<std::size_t>(line.size() - done));
        });
        if (written < 0)
            throwFileSystemError("the state cannot be written", errno);
        done += written;
    }
}

} // namespace pagestack
