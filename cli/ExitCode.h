#pragma once

namespace pagestack {

/// The exit codes of the program. A run that a signal ended gives 128 + the signal's number.
enum class ExitCode {
    AllWritten = 0,
    SomeFailed = 1, ///< a page, a source or a file that was asked for could not be read or written
    WrongUsage = 2,
    NoSource = 3,
    OutputRefused = 4, ///< nothing was written
    TryAgain
    = 75, ///< as SomeFailed, but some of it may work the next time: EX_TEMPFAIL of sysexits.h
};

} // namespace pagestack
