#pragma once

#include "engine/options/ConversionOptions.h"

#include <QString>
#include <QStringList>

namespace pagestack {

/// A command line that cannot be carried out; the reason is one clause.
using UsageError = OptionError;

/// The treatment of a target that exists already. Two pages of a run never share a target: that is
/// refused, or, with `Number`, the later one is numbered.
enum class OnExists {
    Error, ///< the run is refused before anything is written
    Overwrite,
    Skip,
    Number, ///< the output gets a number behind its name
};

enum class ProgressMode {
    Auto, ///< when standard error is a terminal
    Always,
    Never,
};

/// A command line, taken apart.
struct Options
{
    bool wantsHelp = false;
    bool wantsVersion = false;
    bool wantsPresets = false; ///< their names

    bool converts() const { return !wantsHelp && !wantsVersion && !wantsPresets; }

    ConversionOptions conversion;
    QString outputFolder {}; ///< as given; empty: beside each source
    OnExists onExists = OnExists::Error;

    QStringList sources {}; ///< as given
    QStringList pathLists {}; ///< files with one path a line; "-" is standard input
    bool isRecursive = false;

    int jobs = 0; ///< pages worked on at the same time; 0: as many as there are cores

    QString logFile {}; ///< a copy of the log; empty: none
    QString
        recordFile {}; ///< the record of the run; empty: only where `conversion.run` asks for it
    QString reportFile {}; ///< the HTML report of the run; empty: none
    bool leavesLog = true; ///< in the application data folder
    bool isQuiet = false;
    bool isVerbose = false;
    ProgressMode progress = ProgressMode::Auto;
};

/// Takes the words after the program's name apart. Throws UsageError.
Options parseOptions(const QStringList& words);

} // namespace pagestack
