#pragma once

#include <QString>

namespace pagestack {

class Console;
class Log;
class Process;

/// The copy of the log that the command line asks for: a file, standard output, or a pipe or device
/// that is written as it is.
class LogCopy
{
public:
    /// `name` as the user gave it, not empty. `console` is borrowed.
    LogCopy(const QString& name, Console& console);
    ~LogCopy();
    LogCopy(const LogCopy&) = delete;
    LogCopy& operator=(const LogCopy&) = delete;

    /// Whether `name` means standard output.
    static bool isStandardOutput(const QString& name);

    /// Whether it can be written, as far as can be told before the run. Leaves a file that is there
    /// as it is; opens a pipe, which may wait for its reader. Null, or the reason why not.
    QString tryOut();

    /// Writes the log of the job, which has ended. Null, or the reason why it cannot be written.
    QString write(Process& job);
    QString write(const Log& log);

private:
    QString m_name;
    Console& m_console;
    int m_stream = -1; ///< the open pipe or device; none for a file
};

} // namespace pagestack
