#pragma once

#include <QString>

#include <chrono>
#include <functional>
#include <vector>

// The end-to-end figures: each measures our path and its baseline in the same process,
// alternating them, and prints one table row per budget (bench/run collects the rows).
namespace kovena::bench {

struct Options
{
    // Few samples and no judgement: checks that every figure still runs.
    bool quick = false;
};

// A budget on one figure. `ratioAtMost` / `ratioAtLeast` judge measured / baseline (or
// baseline / measured for "times faster"); `below` judges the measured value itself.
struct Row
{
    QString figure;
    QString measured;
    QString baseline;
    QString ratio;
    QString budget;
    bool pass = false;
    // False for a row shown for reference only: it is never judged.
    bool judged = true;
};

// Prints a row as one tab-separated line starting with "row".
void printRow(const Row &row, const Options &options);

using Figure = std::function<int(const Options &)>;
// Registers a figure under `name` (one per process run: `kovena_bench --figure NAME`).
bool registerFigure(const char *name, Figure figure);
// Runs the named figure; returns the process exit code (2 for an unknown name).
int runFigure(const QString &name, const Options &options);

double median(std::vector<double> values);
QString micros(double seconds);
QString millis(double seconds);
QString megabytes(double bytes);
QString times(double ratio);

using Clock = std::chrono::steady_clock;
inline double secondsBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

// Processes Qt events until `done` holds or `timeoutMs` passes; false on timeout.
bool waitUntil(const std::function<bool()> &done, int timeoutMs = 10000);

// CPU time used by the whole process so far, in seconds (all threads).
double processCpuSeconds();

// Resident set size of this process, from /proc/self/statm.
double residentBytes();

// Runs `cleanup` before the application object goes (widgets must not outlive it).
void atShutdown(std::function<void()> cleanup);
void runShutdown();

} // namespace kovena::bench
