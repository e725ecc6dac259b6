#pragma once
// tarvik-cli: the program's work without windows, for scripts, tests and benchmarks. Each
// command lives in its own file under cli/commands/.
#include "cli/command.h"

#include <QStringList>
#include <cstdio>

namespace tarvik::cli {

// Whether the command line names a command that needs a QGuiApplication (printing).
bool needsGui(const QStringList& args);

// args without the program name. Results go to out, messages and questions to err.
int run(const QStringList& args, std::FILE* out = stdout, std::FILE* err = stderr);

} // namespace tarvik::cli
