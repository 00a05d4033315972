#pragma once

#include "engine/fleet/Shard.h"
#include "engine/options/ConversionOptions.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace pagestack {

/// A command line that cannot be carried out; the reason is one clause.
using UsageError = OptionError;

/// What the program is asked to do, by its first word; the values are bits of a set.
enum class Command : unsigned {
    Convert = 1, ///< no such word
    Plan = 2,
    Run = 4,
    MergeLogs = 8,
    Watch = 16,
};

constexpr unsigned operator|(Command a, Command b)
{
    return static_cast<unsigned>(a) | static_cast<unsigned>(b);
}
constexpr unsigned operator|(unsigned a, Command b) { return a | static_cast<unsigned>(b); }

struct CommandName
{
    QString word;
    Command command;
    QString operands; ///< in the help: "SOURCE..."
    QString meaning; ///< a clause
};

/// Those that have a word of their own.
const std::vector<CommandName>& commandNames();

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

/// What is asked of a watched folder.
struct WatchOptions
{
    QString doneFolder {}; ///< as given; empty: "done" in it
    QString failedFolder {}; ///< as given; empty: "failed" in it
    qint64 settleMs = 2000; ///< for which a complete file is at rest
    qint64 pollMs = 0; ///< between two looks; 0: as the file system asks for
    bool isOnce = false; ///< ends when what is there is converted
};

/// A command line, taken apart.
struct Options
{
    Command command = Command::Convert;
    bool wantsHelp = false;
    bool wantsVersion = false;
    bool wantsPresets = false; ///< their names

    bool doesWork() const { return !wantsHelp && !wantsVersion && !wantsPresets; }

    ConversionOptions conversion;
    QString outputFolder {}; ///< as given; empty: beside each source
    OnExists onExists = OnExists::Error;

    QStringList sources {}; ///< what stands behind the options, as given; states to be merged
    QStringList pathLists {}; ///< files with one path a line; "-" is standard input
    bool isRecursive = false;

    QString planFile {}; ///< whose sources are converted, or whose states are merged
    Shard shard {}; ///< of the plan
    QString stateFile {}; ///< what was done is noted there, and not done again; empty: nowhere
    QString failedFile {}; ///< takes the list of sources that failed; empty: none
    int mostFailures = 0; ///< sources that may fail before the run is ended; 0: any number
    bool isJson = false; ///< standard output has events as JSON, and nothing else
    bool isDryRun = false; ///< the outputs are named, and nothing is written

    WatchOptions watch {};

    int jobs = 0; ///< pages worked on at the same time; 0: as many as there are cores

    quint64 memoryLimit = 0; ///< bytes that these may take; 0: as the control group says

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
