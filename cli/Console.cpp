#include "cli/Console.h"

#include <cerrno>
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

    QString asOneLine(QString text)
    {
        for (QChar& character : text) {
            if (character.category() == QChar::Other_Control)
                character = u'?';
        }
        return text + u'\n';
    }

} // namespace

Console::Console(std::FILE* output, std::FILE* errors)
    : m_output { output }
    , m_errors { errors }
    , m_isTerminal(::isatty(::fileno(errors)) == 1)
{
}

void Console::result(const QString& line) { print(asOneLine(line)); }

void Console::print(const QString& text)
{
    const std::scoped_lock lock(m_mutex);
    clearLine();
    write(m_output, text);
}

void Console::trouble(const QString& line)
{
    const std::scoped_lock lock(m_mutex);
    clearLine();
    write(m_errors, programName() + asOneLine(line));
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
    const QByteArray bytes = text.toUtf8();
    const auto size = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stream.file) == size
        && std::fflush(stream.file) == 0)
        return;
    const int error = errno;
    stream.isBroken = true;
    if (&stream == &m_output)
        write(m_errors,
              programName()
                  + u"standard output: %1; the run goes on\n"_s.arg(
                      QString::fromStdString(std::generic_category().message(error))));
}

} // namespace pagestack
