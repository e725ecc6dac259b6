#pragma once
// Timing helpers of the benchmark: repeated runs, median and p99, a table and JSON lines.
#include <QString>
#include <functional>
#include <vector>

namespace tarvik::bench {

struct Timing {
    double medianMs = 0;
    double p99Ms = 0;
    int runs = 0;
};

Timing measure(int runs, const std::function<void()>& work);

struct Result {
    QString scenario;
    Timing program; // through the program's own code
    Timing raw;     // the same minimal work with the raw sqlite3 C API
};

void report(const std::vector<Result>& results, long peakRssKb);

// "<what>: n logs/s through the program, n logs/s raw inserts, r of the raw rate (goal >= 0.5)".
void printImportRates(const char* what, int logs, const Result& result);

long peakResidentKb();

} // namespace tarvik::bench
