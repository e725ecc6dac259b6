#include "measure.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <sys/resource.h>

namespace tarvik::bench {

Timing measure(int runs, const std::function<void()>& work)
{
    std::vector<double> ms;
    ms.reserve(static_cast<size_t>(runs));
    for (int i = 0; i < runs; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work();
        ms.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(ms.begin(), ms.end());
    Timing t;
    t.runs = runs;
    t.medianMs = ms[ms.size() / 2];
    t.p99Ms = ms[std::min(ms.size() - 1, static_cast<size_t>(double(ms.size()) * 0.99))];
    return t;
}

long peakResidentKb()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

void report(const std::vector<Result>& results, long peakRssKb)
{
    std::printf("%-34s %12s %12s %12s %12s %8s\n", "scenario", "median ms", "p99 ms", "raw median", "raw p99", "ratio");
    for (const Result& r : results) {
        const double ratio = r.raw.medianMs > 0 ? r.program.medianMs / r.raw.medianMs : 0;
        std::printf("%-34s %12.3f %12.3f %12.3f %12.3f %8.2f\n", qPrintable(r.scenario), r.program.medianMs, r.program.p99Ms,
                    r.raw.medianMs, r.raw.p99Ms, ratio);
    }
    std::printf("peak resident memory: %ld kB\n", peakRssKb);
    for (const Result& r : results) {
        QJsonObject line{{QStringLiteral("scenario"), r.scenario},
                         {QStringLiteral("median_ms"), r.program.medianMs},
                         {QStringLiteral("p99_ms"), r.program.p99Ms},
                         {QStringLiteral("runs"), r.program.runs},
                         {QStringLiteral("raw_median_ms"), r.raw.medianMs},
                         {QStringLiteral("raw_p99_ms"), r.raw.p99Ms},
                         {QStringLiteral("ratio"), r.raw.medianMs > 0 ? r.program.medianMs / r.raw.medianMs : 0}};
        std::printf("%s\n", QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
    }
    std::printf("%s\n", QJsonDocument(QJsonObject{{QStringLiteral("peak_rss_kb"), double(peakRssKb)}}).toJson(QJsonDocument::Compact).constData());
}

void printImportRates(const char* what, int logs, const Result& result)
{
    std::printf("%s: %.0f logs/s through the program, %.0f logs/s raw inserts, %.2f of the raw rate (goal >= 0.5)\n", what,
                logs / (result.program.medianMs / 1000.0), logs / (result.raw.medianMs / 1000.0),
                result.raw.medianMs / result.program.medianMs);
}

} // namespace tarvik::bench
