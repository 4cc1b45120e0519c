// A host's whole part of a job, with nothing but what is installed: recordings by path, through a
// reader of the library and from a source of its own, put into a set by hand and lined up.
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <vxl_audio/VXClusterSync.h>
#include <vxl_audio/VXFile.h>
#include <vxl_audio/VXFileSet.h>
#include <vxl_audio/VXLandmarkExtract.h>
#include <vxl_audio/wavfile.h>

namespace
{

// One frame at the default parameters.
constexpr float tolerance = 0.032f;

int failures = 0;

void expect(bool condition, const std::string& what)
{
    if (condition) return;
    std::cerr << "host: " << what << '\n';
    ++failures;
}

// Noise whose level changes ten times a second, heard from sample `start` on for 20 s.
class NoiseSource : public VXS::VXInput
{
public:
    explicit NoiseSource(unsigned int start)
    {
        std::uint32_t state = 2463534242u;
        float level = 0.0f;
        for (unsigned int i = 0; i < start + length; ++i) {
            state = state * 1664525u + 1013904223u;
            if (i % 800u == 0u) level = static_cast<float>((state >> 20u) % 64u + 1u) / 64.0f;
            const auto value = static_cast<std::int32_t>(state >> 16u) - 32768;
            if (i >= start) samples.push_back(static_cast<float>(value) / 32768.0f * level);
        }
    }

    unsigned int getFrames() override { return length; }

    bool read_mono(VXS::array<float>& block) override
    {
        for (std::int32_t i = 0; i < block.dim0 && position < samples.size(); ++i)
            block.data[i] = samples[position++];
        return position < samples.size();
    }

    bool rewind() override
    {
        position = 0;
        return true;
    }

private:
    static constexpr unsigned int length = 160000;
    std::vector<float> samples;
    std::size_t position = 0;
};

class StageList : public VXS::VXProgress
{
public:
    void setStage(int stage) override { stages.push_back(stage); }
    void setFraction(float fraction) override { lastFraction = fraction; }

    std::vector<int> stages;
    float lastFraction = -1.0f;
};

void deleteResult(VXS::VXClusterResult* result)
{
    for (VXS::VXClusterMembers* members : *result) {
        for (VXS::VXClusterMember* member : *members)
            delete member;
        delete members;
    }
    delete result;
}

const VXS::VXClusterMembers* clusterOf(const VXS::VXClusterResult& result, std::int64_t fileID)
{
    for (const VXS::VXClusterMembers* members : result) {
        for (const VXS::VXClusterMember* member : *members) {
            if (member->fileID == fileID) return members;
        }
    }
    return nullptr;
}

void expectPair(const VXS::VXClusterResult& result, std::int64_t first, std::int64_t second,
                const std::string& names, float seconds)
{
    const VXS::VXClusterMembers* members = clusterOf(result, first);
    if (members == nullptr || members->size() != 2 || clusterOf(result, second) != members) {
        expect(false, names + ": not a group of these two");
        return;
    }
    std::string foundNames;
    for (const VXS::VXClusterMember* member : *members)
        foundNames += member->name + " ";
    const float offset = (*members->rbegin())->offsetSeconds - (*members->begin())->offsetSeconds;
    expect(foundNames == names, "names " + foundNames + ", expected " + names);
    expect(std::fabs(offset - seconds) <= tolerance,
           names + ": offset " + std::to_string(offset) + ", expected " + std::to_string(seconds));
}

void checkParameters()
{
    VXS::VXExtractParams params;
    expect(params.getFftSize() == 512 && params.setFftSize(1024) && params.getFftSize() == 1024,
           "transform size");
    expect(params.getHopSize() == 256 && params.setHopSize(128) && params.getHopSize() == 128,
           "hop size");
    expect(params.getSampleRate() == 8000 && params.setSampleRate(16000) &&
               params.getSampleRate() == 16000,
           "sample rate");
    expect(params.getMaxPairsPerPeak() == 10 && params.setMaxPairsPerPeak(3) &&
               params.getMaxPairsPerPeak() == 3,
           "pairs a peak");
}

constexpr unsigned int openForReading = 8;
constexpr unsigned int openForWriting = 16;

// A header of a host's own, which the reader takes back and which says that no sample follows.
void checkHeader(const std::string& path)
{
    {
        const VXS::wavfile_t header(path, openForWriting, 2, 48000);
        expect(header.channels == 2 && header.sampleRate == 48000, "format to be written");
    }
    std::ifstream stream(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(stream),
                            std::istreambuf_iterator<char>()};
    expect(bytes.size() == 44 && bytes.substr(0, 4) == "RIFF" && bytes.substr(36, 4) == "data",
           "44 bytes of header");

    const VXS::wavfile_t header(path, openForReading, 1, 16000);
    expect(header.channels == 2 && header.sampleRate == 48000 && header.frames == 0,
           "format of the written header");
}

// Samples by the reader alone.
void checkReader(VXS::VXLandmarkExtract& extractor, const std::string& folder)
{
    VXS::wavfile_t* file = extractor.loadFile(folder + "/clean.wav");
    if (file == nullptr) {
        expect(false, "clean.wav: not opened");
        return;
    }
    expect(file->channels == 1 && file->sampleRate == 8000 && file->frames == 656000,
           "format of clean.wav");
    VXS::array<float> first(1000);
    expect(file->read_mono(first), "clean.wav: not read");
    VXS::array<float> next(1000);
    file->read_mono<float>(next);
    file->rewind();
    VXS::array<float> again(1000);
    file->read_mono(again);
    bool isSame = true;
    bool isOther = false;
    for (std::int32_t i = 0; i < again.dim0; ++i) {
        isSame = isSame && first.data[i] == again.data[i];
        isOther = isOther || first.data[i] != next.data[i];
    }
    expect(isSame, "rewind does not lead to the first sample");
    expect(isOther, "the second read does not go on where the first stopped");
    delete file;

    // What loadFile gives for the sake of the check alone is freed in the same way.
    delete extractor.loadFile(folder + "/clean.wav");

    try {
        const VXS::wavfile_t missing(folder + "/no-such-recording.wav", openForReading, 1, 16000);
        expect(false, "a missing file opens");
    } catch (const std::runtime_error& error) {
        expect(error.what() ==
                   std::string("wavfile_t::wavfile_t() : File doesn't start with 'RIFF'"),
               std::string("message ") + error.what());
    }
}

// Records stand for what is made of them.
VXS::VXLandmarkExtract extractorOf(const VXS::VXExtractParams& params)
{
    return params;
}

VXS::VXClusterSync syncOf(const VXS::VXClusterSyncParams& params)
{
    return params;
}

void checkConversions(const VXS::VXExtractParams& params)
{
    VXS::VXLandmarkExtract extractor = extractorOf(params);
    NoiseSource source(0);
    delete extractor.run(&source, 1);

    const VXS::VXClusterSyncParams syncParams = params;
    VXS::VXClusterSync sync = syncOf(syncParams);
    VXS::VXFile* file = new VXS::VXFile(7);
    VXS::VXFileSet fileSet;
    fileSet.addFile(file);
    VXS::VXClusterResult* result = sync.run(&fileSet, nullptr);
    expect(result->size() == 1, "a group of one");
    deleteResult(result);

    const VXS::VXFile numbered = 8;
    expect(numbered.getFileID() == 8, "a file by its id");
    const VXS::array<float> square = {2, 2, 1};
    expect(square.count() == 4, "an array by its dimensions");
}

// The stages that a host may call alone.
void checkStages(VXS::VXLandmarkExtract& extractor)
{
    VXS::Peak loud{10, -20.0f, 0};
    VXS::Peak quiet{20, -30.0f, 0};
    expect(VXS::VXLandmarkExtract::sortByAmplitudeComparitor(&loud, &quiet), "louder peak first");
    expect(std::fabs(extractor.dB(0.1f) + 20.0f) < 0.001f, "level of 0.1");

    // Before the first extraction there is no mask that could raise anything.
    VXS::array<float> envelope(3);
    envelope.data[0] = 1.0f;
    envelope.data[1] = 2.0f;
    envelope.data[2] = 0.0f;
    extractor.smooth(envelope);
    expect(envelope.data[2] == 0.0f, "smoothing without a mask");

    std::vector<VXS::Peak*> neighbours;
    extractor.findNeighborPeaks(&loud, neighbours);
    expect(neighbours.empty(), "neighbours without peaks");
    extractor.printPeaks();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: host FOLDER_OF_RECORDINGS NEW_WAV_FILE\n";
        return 2;
    }
    const std::string folder = argv[1];

    checkParameters();
    const VXS::VXExtractParams params;
    VXS::VXLandmarkExtract extractor(params);
    checkConversions(params);
    checkStages(extractor);
    checkHeader(argv[2]);
    checkReader(extractor, folder);

    // A file that cannot be read, and one that is extracted and thrown away.
    expect(extractor.run(folder + "/no-such-recording.wav", 9) == nullptr, "missing file");
    delete extractor.run(folder + "/clean.wav", 9);

    VXS::VXFileSet fileSet;
    NoiseSource early(0);
    NoiseSource late(51200);
    fileSet.addFile(extractor.run(&early, 1));
    fileSet.addFile(extractor.run(&late, 2));
    fileSet.addFile(extractor.run(folder + "/slow-clock.wav", 3));

    VXS::wavfile_t* reader = extractor.loadFile(folder + "/clean.wav");
    expect(reader != nullptr, "clean.wav: not opened");
    VXS::WavInput clean(reader);
    expect(clean.getFrames() == 656000, "clean.wav: number of samples");
    VXS::VXFile* cleanFile = extractor.run(&clean, 4);
    cleanFile->computeCLF();
    expect(fileSet.addFile(cleanFile) == cleanFile, "addFile gives back the file");

    const std::vector<std::string> names = {"early", "late", "slow-clock", "clean"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto id = static_cast<std::int64_t>(i) + 1;
        fileSet.idToName[id] = names[i];
        fileSet.nameToId[names[i]] = id;
        fileSet.idToPath[id] = names[i] + ".wav";
    }
    expect(fileSet.getFiles().size() == 4, "four files in the set");

    // A file whose id is taken is not kept, and is the host's to delete.
    auto notKept = std::make_unique<VXS::VXFile>(4);
    fileSet.addFile(notKept.get());
    expect(fileSet.getFiles()[4] == cleanFile, "the earlier file stays");

    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(params)};
    StageList progress;
    VXS::VXClusterResult* result = sync.run(&fileSet, &progress);
    expect(progress.stages == std::vector<int>({0, 1, 2, 3, 4, 5}), "stages 0 to 5");
    expect(progress.lastFraction == 1.0f, "the last fraction is 1");
    expect(result->size() == 2, "two groups");
    // 51200 samples at 8000 a second.
    expectPair(*result, 1, 2, "early late ", 6.4f);
    expectPair(*result, 3, 4, "slow-clock clean ", 6.2568f);
    deleteResult(result);

    VXS::VXFileSet* none = extractor.runAll({});
    expect(none->getFiles().empty(), "runAll of nothing");
    delete none;

    if (failures == 0) std::cout << "host: all well\n";
    return failures == 0 ? 0 : 1;
}
