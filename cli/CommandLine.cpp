#include "cli/CommandLine.h"

#include "cli/Console.h"
#include "cli/Conversion.h"
#include "cli/ExitCode.h"
#include "cli/HelpText.h"
#include "cli/MergeLogs.h"
#include "cli/Options.h"
#include "cli/PlanCommand.h"
#include "cli/SystemLogLines.h"
#include "cli/WatchCommand.h"
#include "engine/files/PosixFile.h"
#include "engine/options/Presets.h"
#include "engine/support/Paths.h"

#include <QCoreApplication>

#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <tuple>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// If a standard stream is closed, the next file opened would get its number, and our messages
    /// would end up in an image.
    void occupyStandardStreams()
    {
        for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
            // The lowest free number is taken, which is this one.
            if (::fcntl(stream, F_GETFD) == -1)
                std::ignore = ::open("/dev/null", stream == STDIN_FILENO ? O_RDONLY : O_WRONLY);
        }
    }

    constexpr int fewestOpenFiles = 8; // besides the standard streams

    QStringList words(int argc, char* argv[])
    {
        QStringList found;
        for (int i = 1; i < argc; ++i)
            found.append(pathFromBytes(argv[i]));
        return found;
    }

    /// Those of the user, then the program's own. What of the user's cannot be read is a trouble.
    QString presetsText(Console& console)
    {
        QStringList troubles;
        QString text;
        for (const Preset& preset : savedPresets(&troubles) + shippedPresets())
            text += preset.name + u'\n';
        for (const QString& trouble : troubles)
            console.trouble(trouble);
        return text;
    }

    int carryOut(const Options& options, Console& console, SystemLogLines& systemLogLines,
                 int& argc, char* argv[])
    {
        if (!options.doesWork()) {
            console.print(options.wantsHelp          ? helpText()
                              : options.wantsVersion ? versionText()
                                                     : presetsText(console));
            return static_cast<int>(console.isBroken() ? ExitCode::SomeFailed
                                                       : ExitCode::AllWritten);
        }
        // Without a few the framework ends the program, and not in good order.
        if (!canOpenFiles(fewestOpenFiles))
            throw std::runtime_error("the system lets the program open too few files (ulimit -n)");
        const QCoreApplication application(argc, argv);
        systemLogLines.setVerbose(options.isVerbose);
        switch (options.command) {
        case Command::Plan:
            return printPlan(options, console);
        case Command::MergeLogs:
            return mergeLogs(options, console);
        case Command::Watch:
            return watchFolder(options, console);
        case Command::Convert:
        case Command::Run:
            return convert(options, console);
        }
        return static_cast<int>(ExitCode::WrongUsage);
    }

} // namespace

int runCommandLine(int argc, char* argv[])
{
    occupyStandardStreams();
    // A reader that has gone away makes the write fail.
    std::signal(SIGPIPE, SIG_IGN);
    // Exceeding the file size limit makes the write fail instead of killing the process.
    std::signal(SIGXFSZ, SIG_IGN);
    Console console;
    SystemLogLines systemLogLines(console);
    try {
        return carryOut(parseOptions(words(argc, argv)), console, systemLogLines, argc, argv);
    } catch (const UsageError& error) {
        console.trouble(
            u"%1; 'pagestack-convert --help' tells more"_s.arg(QString::fromUtf8(error.what())));
        return static_cast<int>(ExitCode::WrongUsage);
    } catch (const std::exception& error) {
        console.trouble(QString::fromUtf8(error.what()));
        return static_cast<int>(isPassing(error.what()) ? ExitCode::TryAgain
                                                        : ExitCode::SomeFailed);
    }
}

} // namespace pagestack
