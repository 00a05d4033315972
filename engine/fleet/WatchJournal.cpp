#include "engine/fleet/WatchJournal.h"

#include "engine/files/PosixFile.h"
#include "engine/files/StagedFile.h"
#include "engine/fleet/JsonLines.h"
#include "engine/fleet/RunState.h"
#include "engine/support/Paths.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int journalFormat = 1;
    constexpr qint64 longJournalBytes = qint64 { 64 } * 1024;

    [[noreturn]] void refuseJournal(const QString& path, const QString& why)
    {
        throw std::runtime_error(u"the state %1 %2"_s.arg(path, why).toStdString());
    }

    std::optional<FileState> stateIn(const QJsonArray& members)
    {
        if (members.size() < 4)
            return std::nullopt;
        FileState state;
        state.identity
            = { members.at(0).toString().toULongLong(), members.at(1).toString().toULongLong() };
        state.sizeBytes = members.at(2).toString().toLongLong();
        state.modifiedNs = members.at(3).toString().toLongLong();
        return state;
    }

    QJsonObject digestMembers(const FileDigest& digest)
    {
        return { { u"size"_s, static_cast<qint64>(digest.sizeBytes) },
                 { u"sha256"_s, digest.hex() } };
    }

    QJsonObject movingEvent(const QString& path, const FileState& state, const QString& to,
                            const QString& reason)
    {
        return { { u"type"_s, u"moving"_s },
                 { u"source"_s, path },
                 { u"to"_s, to },
                 { u"reason"_s, reason },
                 { u"state"_s, WatchJournal::stateMembers(state) } };
    }

} // namespace

// As text: a number of JSON has 53 bits.
QJsonArray WatchJournal::stateMembers(const FileState& state)
{
    return { QString::number(state.identity.device), QString::number(state.identity.inode),
             QString::number(state.sizeBytes), QString::number(state.modifiedNs) };
}

WatchJournal::WatchJournal(const QString& path, const QString& options)
    : m_path(path)
    , m_options(options)
{
    try {
        open();
        read();
    } catch (...) {
        if (m_file >= 0)
            ::close(m_file);
        throw;
    }
}

WatchJournal::~WatchJournal() { ::close(m_file); }

void WatchJournal::open()
{
    const QByteArray name = QFile::encodeName(m_path);
    for (;;) {
        m_file = retryInterrupted([&] {
            return ::open(name.constData(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        });
        if (m_file < 0)
            throwFileSystemError(
                ("the state " + m_path.toStdString() + " cannot be opened").c_str(), errno);
        struct stat status = {};
        if (::fstat(m_file, &status) == 0 && !S_ISREG(status.st_mode))
            refuseJournal(m_path, u"is no regular file"_s);
        if (retryInterrupted([&] { return ::flock(m_file, LOCK_EX | LOCK_NB); }) != 0)
            refuseJournal(m_path, u"is that of a watch that is still going on"_s);
        // Another program may have begun it anew meanwhile.
        if (::fstat(m_file, &status) == 0
            && fileIdentity(name) == std::optional(FileState(status).identity)) {
            m_size = status.st_size;
            return;
        }
        ::close(std::exchange(m_file, -1));
    }
}

void WatchJournal::read()
{
    JsonLines lines(m_path);
    bool isOther = false;
    while (const auto event = lines.next()) {
        if (event->value(u"type") == u"watch"_s) {
            m_running = std::max(1, event->value(u"running").toInt());
            isOther = event->value(u"options") != m_options;
        }
        take(*event, false);
    }
    if (isOther && !m_known.isEmpty())
        refuseJournal(m_path,
                      u"has files in hand that were begun with other options or by another version "
                      "of the program; end them with those, or remove it"_s);
    if (m_size > 0) {
        std::array<std::uint8_t, 1> last {};
        readFully(m_file, static_cast<std::uint64_t>(m_size - 1), last);
        m_isCut = last.front() != '\n';
    }
    if (m_size == 0 || isOther)
        put(head());
}

QByteArray WatchJournal::head() const
{
    return jsonLine({ { u"type"_s, u"watch"_s },
                      { u"format"_s, journalFormat },
                      { u"options"_s, m_options },
                      { u"running"_s, m_running } });
}

const WatchJournal::Known* WatchJournal::known(const QString& path) const
{
    const auto found = m_known.constFind(path);
    return found == m_known.cend() ? nullptr : &*found;
}

QStringList WatchJournal::givenAway(const QSet<QString>& paths) const
{
    QStringList found;
    for (auto known = m_known.cbegin(); known != m_known.cend(); ++known)
        if (!known->isDone && known->movedTo.isEmpty() && !paths.contains(known.key())
            && QFileInfo::exists(known.key()))
            found.append(known->targets.values());
    return found;
}

/// What one file made is not another's, though that was to be written there.
void WatchJournal::takeOutput(const QString& path, const QString& output, const FileDigest& digest)
{
    for (auto known = m_known.begin(); known != m_known.end(); ++known)
        if (const QString name = lastPathComponent(output);
            known.key() != path && known->targets.contains(output) && !known->kept.contains(name)) {
            known->kept.append(name);
            known->outputs.remove(output);
        }
    m_known[path].outputs.insert(output, digest);
}

void WatchJournal::take(const QJsonObject& event, bool isHere)
{
    const QString type = event.value(u"type").toString();
    const QString path = event.value(u"source").toString();
    if (type == u"moved") {
        m_known.remove(path);
        return;
    }
    if (type == u"begin") {
        const auto digest = digestIn(event);
        const auto state = stateIn(event.value(u"state").toArray());
        Known begun { .digest = digest,
                      .identity = state ? std::optional(state->identity) : std::nullopt,
                      .number = event.value(u"number").toInt(),
                      .running = event.value(u"running").toInt(1),
                      .isBegunHere = isHere };
        // What a later attempt finds at its targets is of the one before.
        const auto before = m_known.constFind(path);
        const bool isAgain = before != m_known.cend() && before->digest == digest && digest;
        if (isAgain) {
            begun.kept = before->kept;
            begun.outputs = before->outputs;
        }
        for (const QJsonValue target : event.value(u"targets").toArray())
            begun.targets.insert(target.toString());
        for (const QJsonValue name : isAgain ? QJsonArray() : event.value(u"kept").toArray())
            begun.kept.append(name.toString());
        m_running = std::max(m_running, begun.running + event.value(u"outputs").toInt());
        m_known.insert(path, begun);
    } else if (type != u"page" && type != u"source" && type != u"moving") {
        return;
    }
    Known& known = m_known[path];
    if (type == u"page") {
        if (const auto digest = digestIn(event))
            takeOutput(path, event.value(u"output").toString(), *digest);
    } else if (type == u"source") {
        const QJsonObject output = event.value(u"output").toObject();
        if (const auto digest = digestIn(output))
            takeOutput(path, output.value(u"path").toString(), *digest);
        known.isDone = event.value(u"outcome") == u"done"_s;
    } else if (type == u"moving") {
        known.movedTo = event.value(u"to").toString();
        known.reason = event.value(u"reason").toString();
        known.state = stateIn(event.value(u"state").toArray());
    }
}

void WatchJournal::append(const QJsonObject& event)
{
    take(event, true);
    put(jsonLine(event));
}

void WatchJournal::put(const QByteArray& bytes)
{
    const QByteArray whole = (m_isCut ? QByteArray("\n") : QByteArray()) + bytes;
    qsizetype done = 0;
    m_isCut = true;
    while (done < whole.size()) {
        const ssize_t written = retryInterrupted([&] {
            return ::write(m_file, whole.constData() + done,
                           static_cast<std::size_t>(whole.size() - done));
        });
        if (written < 0)
            throwFileSystemError("the state cannot be written", errno);
        done += written;
        m_size += written;
    }
    m_isCut = false;
}

void WatchJournal::noteMoving(const QString& path, const FileState& state, const QString& to,
                              const QString& reason)
{
    append(movingEvent(path, state, to, reason));
}

void WatchJournal::noteMoved(const QString& path)
{
    append({ { u"type"_s, u"moved"_s }, { u"source"_s, path } });
}

QByteArray WatchJournal::linesOf(const QString& path, const Known& known)
{
    QJsonObject begin = known.digest ? digestMembers(*known.digest) : QJsonObject();
    begin[u"type"_s] = u"begin"_s;
    begin[u"source"_s] = path;
    begin[u"number"_s] = known.number;
    begin[u"running"_s] = known.running;
    begin[u"targets"_s] = QJsonArray::fromStringList(known.targets.values());
    begin[u"kept"_s] = QJsonArray::fromStringList(known.kept);
    if (known.identity) {
        FileState state;
        state.identity = *known.identity;
        begin[u"state"_s] = stateMembers(state);
    }
    QByteArray lines = jsonLine(begin);
    for (auto output = known.outputs.cbegin(); output != known.outputs.cend(); ++output) {
        QJsonObject page = digestMembers(*output);
        page[u"type"_s] = u"page"_s;
        page[u"source"_s] = path;
        page[u"output"_s] = output.key();
        lines += jsonLine(page);
    }
    if (known.isDone)
        lines += jsonLine(
            { { u"type"_s, u"source"_s }, { u"source"_s, path }, { u"outcome"_s, u"done"_s } });
    if (known.state)
        lines += jsonLine(movingEvent(path, *known.state, known.movedTo, known.reason));
    return lines;
}

void WatchJournal::shorten()
{
    QByteArray lines = head();
    for (auto known = m_known.cbegin(); known != m_known.cend(); ++known)
        lines += linesOf(known.key(), *known);
    if (m_size < longJournalBytes || lines.size() > m_size / 2)
        return;
    try {
        StagedFile anew(m_path);
        anew.write(std::vector<std::uint8_t>(lines.cbegin(), lines.cend()));
        anew.commit();
    } catch (const std::runtime_error&) {
        return; // the old one is still there
    }
    const int old = m_file;
    open();
    ::close(old);
    m_isCut = false;
}

} // namespace pagestack
