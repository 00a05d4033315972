#include "cli/CommandLine.h"

int main(int argc, char* argv[]) { return pagestack::runCommandLine(argc, argv); }
