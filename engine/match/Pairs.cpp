#include "match/Pairs.h"

namespace vxlsync
{

std::vector<RecordingPair> pairsToCompare(const std::vector<Prepared>& recordings,
                                          const std::vector<std::string>& devices)
{
    std::vector<std::size_t> sounding;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        if (recordings[i].hasSound()) sounding.push_back(i);
    }
    std::vector<RecordingPair> pairs;
    for (std::size_t i = 0; i < sounding.size(); ++i) {
        for (std::size_t j = i + 1; j < sounding.size(); ++j) {
            const RecordingPair pair{sounding[i], sounding[j]};
            const std::string& device = devices[pair.first];
            if (!device.empty() && device == devices[pair.second]) continue;
            pairs.push_back(pair);
        }
    }
    return pairs;
}

} // namespace vxlsync
