#include "Measure.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <exception>
#include <stdexcept>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench
{

double cpuSeconds()
{
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

std::vector<double> inFreshProcess(const std::function<std::vector<double>()>& work)
{
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe to a process of its own");
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process of its own");
    if (child == 0) {
        try {
            const std::vector<double> values = work();
            const std::size_t bytes = values.size() * sizeof(double);
            const ssize_t written = write(ends[1], values.data(), bytes);
            _exit(written == static_cast<ssize_t>(bytes) ? 0 : 1);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            _exit(1);
        }
    }
    close(ends[1]);
    std::vector<double> values;
    double value;
    while (read(ends[0], &value, sizeof(value)) == static_cast<ssize_t>(sizeof(value)))
        values.push_back(value);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0 || values.empty()) throw std::runtime_error("a run in its own process failed");
    return values;
}

std::vector<double> medianRun(int runs, const std::function<std::vector<double>()>& work)
{
    std::vector<std::vector<double>> all;
    for (int i = 0; i < runs; ++i)
        all.push_back(inFreshProcess(work));
    std::sort(all.begin(), all.end());
    return all[all.size() / 2];
}

double fittedExponent(const std::vector<double>& x, const std::vector<double>& y)
{
    const auto count = static_cast<double>(x.size());
    double sumX = 0.0;
    double sumY = 0.0;
    double sumXX = 0.0;
    double sumXY = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double logX = std::log(x[i]);
        const double logY = std::log(y[i]);
        sumX += logX;
        sumY += logY;
        sumXX += logX * logX;
        sumXY += logX * logY;
    }
    return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

double peakResidentMiB()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

std::string text(const char* format, ...)
{
    char buffer[512];
    va_list values;
    va_start(values, format);
    std::vsnprintf(buffer, sizeof(buffer), format, values);
    va_end(values);
    return buffer;
}

void printRow(const std::string& what, const std::string& figure, const std::string& absolute,
              std::optional<bool> isMet)
{
    const char* verdict = "";
    if (isMet) verdict = *isMet ? "met" : "NOT MET";
    std::printf("%s\t%s\t%s\t%s\n", what.c_str(), figure.c_str(), absolute.c_str(), verdict);
    std::fflush(stdout);
}

} // namespace bench
