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

    bool takesValue() const { return !value.isEmpty(); }
};

/// All options, in the order of the help.
const std::vector<OptionRow>& optionTable();

} // namespace pagestack
