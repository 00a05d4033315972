#include "cli/Console.h"

#include "engine/files/PosixFile.h"
#include "engine/support/SystemLog.h"

#include <cerrno>
#include <poll.h>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString& programName()
    {
        static const QString name = u"pagestack-convert: "_s;
        return name;
    }

    QString lineOf(const QString& text) { return asOneLine(text, u'?') + u'\n'; }

} // namespace

int writeAll(int file, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t written = retryInterrupted(
            [&] { return ::write(file, bytes.data(), static_cast<std::size_t>(bytes.size())); });
        if (written >= 0) {
            bytes = bytes.sliced(written);
            continue;
        }
        if (errno != EAGAIN && errno != EWOULDBLOCK)
            return errno;
        pollfd ready { file, POLLOUT, 0 };
        if (retryInterrupted([&] { return ::poll(&ready, 1, -1); }) < 0)
            return errno;
    }
    return 0;
}

Console::Console(std::FILE* output, std::FILE* errors)
    : m_output { output }
    , m_errors { errors }
    , m_isTerminal(::isatty(::fileno(errors)) == 1)
{
}

void Console::result(const QString& line) { print(lineOf(line)); }

void Console::print(const QString& text)
{
    const std::scoped_lock lock(m_mutex);
    clearLine();
    write(m_output, text);
}

int Console::putBytes(QByteArrayView bytes)
{
    const std::scoped_lock lock(m_mutex);
    const int error = writeAll(::fileno(m_output.file), bytes);
    m_output.isBroken = m_output.isBroken || error != 0;
    return error;
}

bool Console::isBroken()
{
    const std::scoped_lock lock(m_mutex);
    return m_output.isBroken || m_errors.isBroken;
}

void Console::trouble(const QString& line)
{
    const std::scoped_lock lock(m_mutex);
    clearLine();
    write(m_errors, programName() + lineOf(line));
}

void Console::showProgress(const QString& text)
{
    const std::scoped_lock lock(m_mutex);
    if (!m_isTerminal) {
        write(m_errors, text + u'\n');
        return;
    }
    write(m_errors, u'\r' + text.leftJustified(m_progressWidth));
    m_progressWidth = text.size();
}

void Console::clearProgress()
{
    const std::scoped_lock lock(m_mutex);
    clearLine();
}

void Console::clearLine()
{
    if (m_progressWidth > 0)
        write(m_errors, u'\r' + QString(m_progressWidth, u' ') + u'\r');
    m_progressWidth = 0;
}

// Line by line: a reader sees a result when it is there, and the two streams keep their order.
void Console::write(Stream& stream, const QString& text)
{
    if (stream.isBroken)
        return;
    const int error = writeAll(::fileno(stream.file), text.toUtf8());
    if (error == 0)
        return;
    stream.isBroken = true;
    if (&stream == &m_output)
        write(m_errors,
              programName()
                  + u"standard output: %1; the run goes on\n"_s.arg(
                      QString::fromStdString(std::generic_category().message(error))));
}

} // namespace pagestack
