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

/// The same for what `operation` met: "Error in (getInfo) : reason".
void systemLogError(const QString& operation, const std::exception& error);

} // namespace pagestack
