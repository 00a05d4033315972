#pragma once

#include <QString>

#include <span>

namespace pagestack {

/// A text by which the engine says what went wrong. All of them are English wherever they are made,
/// written to a log or to standard error.
struct ReasonPattern
{
    const char* text = nullptr; ///< with %1 to %9 for what is put in, in this order
    int nested = 0; ///< the place that holds a reason itself; 0: none does
};

/// All texts that a user can meet; tests/lint/reasons.py compares them with those of the engine.
std::span<const ReasonPattern> reasonPatterns();

/// `reason`, which may be several joined by "; " as in the log, in the language of the application;
/// as it is where no translation is installed, and what is not known of it, such as the words of a
/// codec or of the system. Any thread.
QString shownReason(const QString& reason);

} // namespace pagestack
