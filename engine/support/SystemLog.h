#pragma once

#include <QLoggingCategory>
#include <QString>

#include <exception>
#include <memory>
#include <vector>

namespace pagestack {

Q_DECLARE_LOGGING_CATEGORY(systemLogCategory)

/// Writes one line of text to the system log: a Qt logging category, so standard error, the journal
/// or the unified log, whichever the platform offers. Control characters in `text`, line breaks
/// included, are written as blanks. Any thread.
void systemLog(const QString& text);

/// The same for what `operation` met: "Error in (getInfo) : reason".
void systemLogError(const QString& operation, const std::exception& error);

/// How many lines about one subject the system log takes. Those who write about it share one;
/// their lines are written by one thread at a time, but may be held back by any number.
class LogQuota
{
public:
    /// Of `mostLines` lines the last is `closing`, whatever it would have been. 0: none is written.
    LogQuota(int mostLines, QString closing)
        : m_mostLines(mostLines)
        , m_closing(std::move(closing))
    {
    }

private:
    friend void systemLog(const QString& text, const std::shared_ptr<LogQuota>& quota);
    friend class LogHold;

    const int m_mostLines;
    const QString m_closing;
    int m_lines = 0; ///< asked for so far; whoever writes
};

/// Writes a line as long as `quota`, never null, allows for it.
void systemLog(const QString& text, const std::shared_ptr<LogQuota>& quota);

/// A line that was held back.
struct HeldLine
{
    QString text;
    std::shared_ptr<LogQuota> quota; ///< null: none
};
using HeldLines = std::vector<HeldLine>;

/// While it lives, what its thread writes to the system log is held back instead. It ends on the
/// thread that made it, before any that was made there earlier, which then holds back again.
class LogHold
{
public:
    LogHold();
    ~LogHold();
    LogHold(const LogHold&) = delete;
    LogHold& operator=(const LogHold&) = delete;

    /// What was held back since the last call, in order. Lines that their quota cannot allow for
    /// are left out, so a page with a complaint a row takes no memory.
    HeldLines takeLines() { return std::exchange(m_lines, {}); }

private:
    friend void systemLog(const QString& text);
    friend void systemLog(const QString& text, const std::shared_ptr<LogQuota>& quota);

    void hold(const QString& text, const std::shared_ptr<LogQuota>& quota);

    LogHold* const m_outer;
    HeldLines m_lines;
};

/// Writes lines that were held back, as if it were now.
void writeHeldLines(const HeldLines& lines);

} // namespace pagestack
