#pragma once

namespace pagestack {

/// The whole program, from the words of the command line to the code for the shell.
int runCommandLine(int argc, char* argv[]);

} // namespace pagestack
