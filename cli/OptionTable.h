#pragma once

#include "cli/Options.h"

#include <vector>

namespace pagestack {

/// One option: its names, its help and its effect.
struct OptionRow
{
    char16_t shortName = 0; ///< 0: none
    QString longName; ///< without dashes
    QString value; ///< its value in the help; empty: it takes none
    QString meaning;
    /// Throws UsageError for a value that it cannot take.
    void (*apply)(Options& options, const OptionRow& row, const QString& value) = nullptr;
    unsigned commands = static_cast<unsigned>(Command::Convert); ///< those that take it

    bool takesValue() const { return !value.isEmpty(); }
    bool isFor(Command command) const { return (commands & static_cast<unsigned>(command)) != 0; }
};

/// All options, in the order of the help.
const std::vector<OptionRow>& optionTable();

/// The row `name`; null when there is none.
const OptionRow* optionRow(QStringView name);

/// The words of the commands that take the option: "run, merge-logs".
QString commandsOf(const OptionRow& row);

} // namespace pagestack
