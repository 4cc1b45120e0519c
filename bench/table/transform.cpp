// The provider of the transform beside FFTW and KissFFT, on frames of 512 samples.

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <regex>
#include <string>
#include <vector>

#ifdef VXS_BENCH_FFTW
#include <fftw3.h>
#endif
#ifdef VXS_BENCH_KISSFFT
#include <kiss_fftr.h>
#endif

#include "Measure.h"
#include "vxaccelerate/transform.h"

#ifdef VXS_BENCH_REGISTERS
#define VXS_BENCH_PROVIDER VXS_BENCH_REGISTERS
constexpr bool isNarrow = true;
#else
#define VXS_BENCH_PROVIDER "default build"
constexpr bool isNarrow = false;
#endif

namespace
{

constexpr int size = 512;
constexpr std::size_t frames = 64;

// Calls the work with the place of each frame, many times over, and tells the seconds a frame.
double secondsAFrame(const std::function<void(std::size_t)>& transformAll)
{
    constexpr int rounds = 1000;
    const double seconds = bench::secondsOf([&] {
        for (int i = 0; i < rounds; ++i)
            transformAll(frames);
    });
    return seconds / static_cast<double>(rounds * frames);
}

constexpr const char* measuredPlan = "FFTW's measured plan";
constexpr const char* measuredNarrowPlan = "FFTW's measured plan with SSE2 alone";
constexpr const char* kissFft = "KissFFT";

struct Contender {
    std::string name;
    std::function<void(std::size_t)> transformAll;
    std::vector<double> times;
    std::vector<double> ratios;
};

#ifdef VXS_BENCH_FFTW

// The plan that is measured, or null, with nothing wider than SSE2. FFTW has no switch for it, but
// takes a plan in words, in which the names of the wider parts can be replaced.
fftwf_plan narrowPlan(float* input, fftwf_complex* output)
{
    char* words = fftwf_export_wisdom_to_string();
    const std::regex wider("_avx[0-9a-z_]*");
    const std::string narrow = std::regex_replace(std::string(words), wider, "_sse2");
    const bool isNarrowed = narrow != words;
    std::free(words);
    fftwf_forget_wisdom();
    if (!isNarrowed || fftwf_import_wisdom_from_string(narrow.c_str()) == 0) return nullptr;
    return fftwf_plan_dft_r2c_1d(size, input, output, FFTW_MEASURE | FFTW_WISDOM_ONLY);
}

#endif

} // namespace

int main()
{
    constexpr int runs = 15;
    const std::string who = "transform of 512, " VXS_BENCH_PROVIDER;
    std::vector<float> input(frames * size);
    std::vector<float> output(size + 2);
    std::mt19937 generator(1);
    std::normal_distribution<float> noise(0.0f, 0.1f);
    for (float& sample : input)
        sample = noise(generator);

    vxaccelerate::FFTState_Float* state = nullptr;
    unsigned int bytes = 0;
    vxaccelerate::transform::FFTInit(&state, 9);
    vxaccelerate::transform::FFTGetBufSize(state, &bytes);
    const std::unique_ptr<unsigned char[]> buffer(new unsigned char[bytes]);
    const auto transformAll = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            vxaccelerate::transform::FFTFwd(input.data() + i * size, output.data(), state,
                                            buffer.get());
        }
    };

    std::vector<Contender> contenders;
#ifdef VXS_BENCH_FFTW
    float* fftwInput = fftwf_alloc_real(frames * size);
    fftwf_complex* fftwOutput = fftwf_alloc_complex(size / 2 + 1);
    const fftwf_plan plan = fftwf_plan_dft_r2c_1d(size, fftwInput, fftwOutput, FFTW_MEASURE);
    const fftwf_plan narrow = isNarrow ? narrowPlan(fftwInput, fftwOutput) : nullptr;
    std::copy(input.begin(), input.end(), fftwInput);
    const auto addPlan = [&](const char* name, fftwf_plan executed) {
        const auto work = [&, executed](std::size_t count) {
            for (std::size_t i = 0; i < count; ++i)
                fftwf_execute_dft_r2c(executed, fftwInput + i * size, fftwOutput);
        };
        contenders.push_back({name, work, {}, {}});
    };
    addPlan(measuredPlan, plan);
    if (narrow != nullptr) addPlan(measuredNarrowPlan, narrow);
#endif
#ifdef VXS_BENCH_KISSFFT
    const kiss_fftr_cfg kiss = kiss_fftr_alloc(size, 0, nullptr, nullptr);
    std::vector<kiss_fft_cpx> kissOutput(size / 2 + 1);
    const auto transformByKiss = [&](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            kiss_fftr(kiss, input.data() + i * size, kissOutput.data());
    };
    contenders.push_back({kissFft, transformByKiss, {}, {}});
#endif

    std::vector<double> own;
    for (int i = 0; i < runs; ++i) {
        own.push_back(secondsAFrame(transformAll));
        for (Contender& contender : contenders) {
            contender.times.push_back(secondsAFrame(contender.transformAll));
            contender.ratios.push_back(own.back() / contender.times.back());
        }
    }
    for (const Contender& contender : contenders) {
        const double ratio = bench::median(contender.ratios);
        const std::string times =
            bench::text("%.0f ns, the other %.0f ns", bench::median(own) * 1e9,
                        bench::median(contender.times) * 1e9);
        if (contender.name == kissFft) {
            bench::printRow(who + ": at least 3 x speed of KissFFT",
                            bench::text("%.2f", 1.0 / ratio), times, ratio <= 1.0 / 3.0);
        } else if (isNarrow && contender.name == measuredPlan) {
            // FFTW chooses wider registers for it.
            bench::printRow(who + ": time beside " + contender.name, bench::text("%.2f", ratio),
                            times);
        } else {
            bench::printRow(who + ": at most 1.1 x time of " + contender.name,
                            bench::text("%.2f", ratio), times, ratio <= 1.1);
        }
    }
    if (contenders.empty()) {
        bench::printRow(who, bench::text("%.0f ns", bench::median(own) * 1e9),
                        "neither FFTW nor KissFFT is installed");
    }

    vxaccelerate::transform::FFTFree(state);
#ifdef VXS_BENCH_FFTW
    fftwf_destroy_plan(plan);
    if (narrow != nullptr) fftwf_destroy_plan(narrow);
    fftwf_free(fftwInput);
    fftwf_free(fftwOutput);
#endif
#ifdef VXS_BENCH_KISSFFT
    kiss_fftr_free(kiss);
#endif
    return 0;
}
