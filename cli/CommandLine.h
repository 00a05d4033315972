#pragma once

namespace pagestack {

/// Runs the program with the words of the command line and returns its exit code.
int runCommandLine(int argc, char* argv[]);

} // namespace pagestack
