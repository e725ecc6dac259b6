#pragma once
// tarvik-cli: the program's work without windows, for scripts, tests and benchmarks.
#include <QStringList>
#include <cstdio>

namespace tarvik::cli {

enum ExitCode { Success = 0, Refused = 1, Usage = 2 };

// Printing needs fonts: a command line with "drucken" runs under a QGuiApplication.
bool needsGui(const QStringList& args);

// args without the program name. Results go to out, messages and questions to err.
int run(const QStringList& args, std::FILE* out = stdout, std::FILE* err = stderr);

} // namespace tarvik::cli
