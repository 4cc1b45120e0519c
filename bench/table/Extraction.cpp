#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <vector>

#include "Goals.h"
#include "Measure.h"
#include "NarrowTransform.h"
#include "Recordings.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "plain/Extractor.h"
#include "plain/Reader.h"
#include "vxaccelerate/transform.h"

namespace bench
{

namespace
{

// Two builds of the transform alone on frames of real sound, seconds a frame.
class Transform
{
public:
    explicit Transform(const std::string& path) : narrow(order)
    {
        VXS::WavInput input(VXS::VXLandmarkExtract{VXS::VXExtractParams()}.loadFile(path));
        VXS::array<float> block(size * frames);
        std::fill(block.data, block.data + block.count(), 0.0f);
        input.read_mono(block);
        samples.assign(block.data, block.data + block.count());
        vxaccelerate::transform::FFTInit(&state, order);
        unsigned int bytes = 0;
        vxaccelerate::transform::FFTGetBufSize(state, &bytes);
        buffer.reset(new unsigned char[bytes]);
    }
    ~Transform() { vxaccelerate::transform::FFTFree(state); }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    // With the registers that every x86-64 has.
    double secondsANarrowFrame()
    {
        return secondsAFrame(
            [this](const float* frame, float* output) { narrow.forward(frame, output); });
    }
    // As the library runs it on this machine.
    double secondsAFrame()
    {
        return secondsAFrame([this](const float* frame, float* output) {
            vxaccelerate::transform::FFTFwd(frame, output, state, buffer.get());
        });
    }

private:
    static constexpr unsigned int order = 9;
    static constexpr int size = 1 << order;
    static constexpr int frames = 64;

    template <typename Forward>
    double secondsAFrame(Forward forward)
    {
        constexpr int rounds = 800;
        std::vector<float> output(size);
        const double seconds = secondsOf([&] {
            for (int i = 0; i < rounds * frames; ++i)
                forward(samples.data() + i % frames * size, output.data());
        });
        return seconds / (rounds * frames);
    }

    std::vector<float> samples;
    NarrowTransform narrow;
    vxaccelerate::FFTState_Float* state = nullptr;
    std::unique_ptr<unsigned char[]> buffer;
};

std::size_t landmarksOf(VXS::VXFile& file)
{
    std::size_t count = 0;
    for (const auto& frame : file.getLandmarkMap())
        count += frame.second.size();
    return count;
}

// The same work by the plain twin.
void extractPlainly(const std::string& path)
{
    plain::Reader reader(path);
    plain::Extractor extractor{plain::Parameters()};
    plain::Recording recording(1);
    extractor.run(reader, recording);
}

void measureRecording(const std::string& name, const std::string& path, double mostTransforms)
{
    constexpr int runs = 15;
    const std::vector<double> run = medianRun(runs, [&] {
        Transform transforms(path);
        const double narrow = transforms.secondsANarrowFrame();
        const double transform = transforms.secondsAFrame();
        VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
        std::unique_ptr<VXS::VXFile> file;
        const double seconds = secondsOf([&] { file.reset(extractor.run(path, 1)); });
        if (file == nullptr) throw std::runtime_error(path + ": cannot be extracted");
        const auto frames = static_cast<double>(extractor.frames->size());
        return std::vector<double>{seconds / frames / narrow,
                                   seconds / frames,
                                   narrow,
                                   transform,
                                   seconds / frames / transform,
                                   static_cast<double>(landmarksOf(*file)) / frames};
    });
    printRow(
        text("extraction, %s, at most %g SSE2 transforms a frame", name.c_str(), mostTransforms),
        text("%.2f", run[0]),
        text("%.2f us a frame, transform %.3f us with SSE2, %.3f us as chosen here (ratio "
             "%.1f), %.1f landmarks a frame, %.0f x real time",
             run[1] * 1e6, run[2] * 1e6, run[3] * 1e6, run[4], run[5], 256.0 / 8000.0 / run[1]),
        run[0] <= mostTransforms);
}

void compareWithTwin(const std::string& name, const std::string& path)
{
    constexpr int runs = 7;
    constexpr double leastRatio = 6.0;
    std::vector<double> ratios;
    std::vector<double> twinTimes;
    for (int i = 0; i < runs; ++i) {
        // Each on a fresh heap.
        const std::vector<double> own = inFreshProcess([&] {
            VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
            std::unique_ptr<VXS::VXFile> file;
            const double seconds = secondsOf([&] { file.reset(extractor.run(path, 1)); });
            return std::vector<double>{seconds, static_cast<double>(extractor.frames->size())};
        });
        const std::vector<double> twin = inFreshProcess(
            [&] { return std::vector<double>{secondsOf([&] { extractPlainly(path); })}; });
        ratios.push_back(twin[0] / own[0]);
        twinTimes.push_back(twin[0] / own[1]);
    }
    const double ratio = median(ratios);
    printRow(text("extraction, %s, at least %g x plain twin", name.c_str(), leastRatio),
             text("%.1f", ratio), text("twin %.2f us a frame", median(twinTimes) * 1e6),
             ratio >= leastRatio);
}

} // namespace

void measureExtraction(const std::string& folder)
{
    measureRecording("clean music", folder + "/recordings/clean000.wav", 6.0);
    measureRecording("noisy music", folder + "/recordings/heavy000.wav", 8.0);
    compareWithTwin("clean music", folder + "/recordings/clean000.wav");
    compareWithTwin("noisy music", folder + "/recordings/heavy000.wav");
}

void measureClaim(const std::string& folder)
{
    constexpr double mostSeconds = 2.0;
    constexpr double mostMiB = 1024.0;
    const std::string path = folder + "/claim.wav";
    for (const char width : {char{16}, char{8}}) {
        const char bytes[] = {'R', 'I',   'F',    'F',    0,   0,   0,      0,      'W', 'A', 'V',
                              'E', 'f',   'm',    't',    ' ', 16,  0,      0,      0,   1,   0,
                              1,   0,     '\x40', '\x1F', 0,   0,   '\x40', '\x1F', 0,   0,   1,
                              0,   width, 0,      'd',    'a', 't', 'a',    -1,     -1,  -1,  -1};
        std::ofstream(path, std::ios::binary).write(bytes, sizeof(bytes));
        VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
        std::unique_ptr<VXS::VXFile> file;
        const double seconds = secondsOf([&] { file.reset(extractor.run(path, 1)); });
        if (file == nullptr) throw std::runtime_error(path + ": cannot be extracted");
        const double resident = peakResidentMiB();
        printRow(text("44-byte header claiming 4 GiB of %d bits, under 2 s and 1 GiB", width),
                 text("%.2f s, %.0f MiB", seconds, resident),
                 text("%zu frames", extractor.frames->size()),
                 seconds < mostSeconds && resident < mostMiB);
    }
    std::filesystem::remove(path);
}

} // namespace bench
