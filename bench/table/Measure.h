#ifndef VXS_BENCH_MEASURE_H
#define VXS_BENCH_MEASURE_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace bench
{

// Processor time of this process in seconds, the system's part included: page faults are part of
// the work, and what else the machine does is not.
double cpuSeconds();

template <typename Work>
double secondsOf(Work work)
{
    const double start = cpuSeconds();
    work();
    return cpuSeconds() - start;
}

double median(std::vector<double> values);

// Does the work in a process of its own and returns what it returned. So every run begins with a
// fresh heap, as the run of a real job does, and its peak memory is its own. Throws
// std::runtime_error where the work fails.
std::vector<double> inFreshProcess(const std::function<std::vector<double>()>& work);

// The same several times: the run of the middle by its first value.
std::vector<double> medianRun(int runs, const std::function<std::vector<double>()>& work);

// The slope of a straight line through the logarithms: y grows as x to this power.
double fittedExponent(const std::vector<double>& x, const std::vector<double>& y);

// Greatest resident size of this process so far, in MiB.
double peakResidentMiB();

std::string text(const char* format, ...) __attribute__((format(printf, 1, 2)));

// One line of the table: what is measured, the figure, absolutes beside it, and whether a goal is
// met. Without a goal there is nothing to meet.
void printRow(const std::string& what, const std::string& figure, const std::string& absolute,
              std::optional<bool> isMet = std::nullopt);

} // namespace bench

#endif
