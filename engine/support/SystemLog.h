#pragma once

#include <QLoggingCategory>
#include <QString>

#include <exception>

namespace pagestack {

Q_DECLARE_LOGGING_CATEGORY(systemLogCategory)

/// Writes one line of text to the system log: a Qt logging category, so standard error, the journal
/// or the unified log, whichever the platform offers. Control characters in `text`, line breaks
/// included, are written as blanks. Any thread.
void systemLog(const QString& text);

/// `text` with `replacement` for each control character: a line break must not forge a second
/// line, an escape sequence must not reach a terminal.
QString asOneLine(QString text, QChar replacement);

/// Writes "Error in (getInfo) : reason" for the operation "getInfo".
void systemLogError(const QString& operation, const std::exception& error);

/// Does `work`. An exception is logged as an error of `operation` and goes no further; returns
/// whether there was none.
template <typename Work>
bool guarded(const QString& operation, Work work)
{
    try {
        work();
        return true;
    } catch (const std::exception& error) {
        systemLogError(operation, error);
        return false;
    }
}

} // namespace pagestack
