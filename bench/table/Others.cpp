#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef VXS_BENCH_FFTW
#include <fftw3.h>
#endif

#include "Goals.h"
#include "Jobs.h"
#include "Measure.h"
#include "Recordings.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"

namespace bench
{

namespace
{

constexpr int runs = 5;

// Processor time of a program, or a negative number if it cannot be run.
double secondsOfProgram(const std::vector<std::string>& arguments)
{
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const int nothing = open("/dev/null", O_WRONLY);
        dup2(nothing, STDOUT_FILENO);
        dup2(nothing, STDERR_FILENO);
        execvp(pointers[0], pointers.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) return -1.0;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return -1.0;
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void measureChromaprint(const std::string& path)
{
    constexpr const char* what = "extraction of 10 min of clean music, x fpcalc";
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    std::vector<double> own;
    std::vector<double> other;
    std::vector<double> ratios;
    for (int i = 0; i < runs; ++i) {
        own.push_back(secondsOf([&] { delete extractor.run(path, 1); }));
        other.push_back(secondsOfProgram({"fpcalc", "-length", "599", path}));
        if (other.back() < 0.0) {
            printRow(what, "-", "fpcalc is not installed");
            return;
        }
        ratios.push_back(other.back() / own.back());
    }
    printRow(what, text("%.1f", median(ratios)),
             text("%.0f ms, fpcalc %.0f ms with its start; its fingerprint is coarser, 8 frames a "
                  "second and no positions of peaks",
                  median(own) * 1e3, median(other) * 1e3));
}

#ifdef VXS_BENCH_FFTW

Samples samplesOf(const std::string& path)
{
    return readMusic({path});
}

// The shift of the second recording against the first at which their samples agree best.
double correlate(const std::string& first, const std::string& second)
{
    const Samples a = samplesOf(first);
    const Samples b = samplesOf(second);
    // Twice the length, so that the ends do not meet; its prime factors are small.
    const std::size_t size = 2 * a.size();
    const std::size_t bins = size / 2 + 1;
    float* signal = fftwf_alloc_real(size);
    fftwf_complex* left = fftwf_alloc_complex(bins);
    fftwf_complex* right = fftwf_alloc_complex(bins);
    const auto length = static_cast<int>(size);
    const auto transform = [&](const Samples& samples, fftwf_complex* spectrum) {
        const fftwf_plan plan = fftwf_plan_dft_r2c_1d(length, signal, spectrum, FFTW_ESTIMATE);
        std::fill(signal, signal + size, 0.0f);
        std::copy(samples.begin(), samples.end(), signal);
        fftwf_execute(plan);
        fftwf_destroy_plan(plan);
    };
    transform(a, left);
    transform(b, right);
    for (std::size_t k = 0; k < bins; ++k) {
        const float real = left[k][0] * right[k][0] + left[k][1] * right[k][1];
        const float imaginary = left[k][1] * right[k][0] - left[k][0] * right[k][1];
        left[k][0] = real;
        left[k][1] = imaginary;
    }
    const fftwf_plan plan = fftwf_plan_dft_c2r_1d(length, left, signal, FFTW_ESTIMATE);
    fftwf_execute(plan);
    fftwf_destroy_plan(plan);
    const auto best = std::max_element(signal, signal + size) - signal;
    const auto shift = best < static_cast<std::ptrdiff_t>(size / 2)
                           ? best
                           : best - static_cast<std::ptrdiff_t>(size);
    fftwf_free(signal);
    fftwf_free(left);
    fftwf_free(right);
    return static_cast<double>(shift) / sampleRate;
}

void measureCorrelation(const std::vector<std::string>& pair)
{
    std::vector<double> own;
    std::vector<double> other;
    std::vector<double> ratios;
    double correlated = 0.0;
    float found = 0.0f;
    for (int i = 0; i < runs; ++i) {
        own.push_back(secondsOf([&] {
            const std::unique_ptr<VXS::VXFileSet> fileSet = extractFiles(pair);
            VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
            const VXS::VXClusterResultHolder result(sync.run(fileSet.get(), nullptr));
            found = (*(*result->begin())->rbegin())->offsetSeconds;
        }));
        other.push_back(secondsOf([&] { correlated = correlate(pair[0], pair[1]); }));
        ratios.push_back(other.back() / own.back());
    }
    printRow("one pair of 10 min, clean, x cross-correlation by FFTW", text("%.1f", median(ratios)),
             text("%.0f ms for %.3f s, correlation %.0f ms for %.4f s; true shift %.1f s",
                  median(own) * 1e3, static_cast<double>(found), median(other) * 1e3, correlated,
                  startStepInSeconds));
}

#endif

} // namespace

void measureOthers(const std::string& folder)
{
    const std::vector<std::string> clean = wavesIn(folder + "/recordings", "clean");
    measureChromaprint(clean[0]);
#ifdef VXS_BENCH_FFTW
    measureCorrelation({clean[0], clean[1]});
#else
    printRow("one pair of 10 min, clean, x cross-correlation by FFTW", "-",
             "FFTW is not installed");
#endif
}

} // namespace bench
