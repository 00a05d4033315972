#include "cli/LogCopy.h"

#include "cli/Console.h"
#include "engine/files/PosixFile.h"
#include "engine/files/StagedFile.h"
#include "engine/job/Process.h"
#include "engine/support/Paths.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <stdexcept>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString errorText(int number)
    {
        return QString::fromStdString(std::generic_category().message(number));
    }

    bool isPipeOrDevice(const QString& name)
    {
        struct stat status = {};
        return ::stat(QFile::encodeName(name).constData(), &status) == 0
            && (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode));
    }

} // namespace

LogCopy::LogCopy(const QString& name, Console& console)
    : m_name(name)
    , m_console(console)
{
}

LogCopy::~LogCopy()
{
    if (m_stream >= 0)
        ::close(m_stream);
}

bool LogCopy::isStandardOutput(const QString& name)
{
    return name == u"-" || name == u"/dev/stdout" || name == u"/dev/fd/1"
        || name == u"/proc/self/fd/1";
}

QString LogCopy::tryOut()
{
    if (isStandardOutput(m_name))
        return {};
    if (isPipeOrDevice(m_name)) {
        m_stream = retryInterrupted(
            [this] { return ::open(QFile::encodeName(m_name).constData(), O_WRONLY | O_CLOEXEC); });
        return m_stream < 0 ? errorText(errno) : QString();
    }
    try {
        const StagedFile file(m_name); // goes again
        return {};
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
}

QString LogCopy::write(Process& job)
{
    try {
        if (m_stream < 0 && !isStandardOutput(m_name)) {
            const QString target = QFile::decodeName(StagedFile::resolvedTarget(m_name));
            job.removeLeftovers(folderPart(target));
        }
        return write(*job.log());
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
}

QString LogCopy::write(const Log& log)
{
    try {
        if (m_stream < 0 && !isStandardOutput(m_name))
            return log.saveTo(m_name);
        log.writeTo([this](const QByteArray& text) {
            const int error = m_stream < 0 ? m_console.putBytes(text) : writeAll(m_stream, text);
            if (error != 0)
                throw std::runtime_error(errorText(error).toStdString());
        });
        return {};
    } catch (const std::exception& error) {
        return QString::fromUtf8(error.what());
    }
}

} // namespace pagestack
