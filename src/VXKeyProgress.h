#ifndef VXS_VXKEYPROGRESS_H
#define VXS_VXKEYPROGRESS_H

#include <cstddef>
#include <cstdint>

namespace VXS
{

class VXProgress;

// Reports the share of the keys that are done, at most once a whole percent. The votes are cast by
// pairs of files and not key by key, so the keys are counted in step with the votes.
class VXKeyProgress
{
public:
    // `newProgress` is borrowed and may be null.
    VXKeyProgress(VXProgress* newProgress, std::size_t newKeys, std::uint64_t newVotes);

    void addVotes(std::uint64_t cast)
    {
        votesDone += cast;
        if (votesDone >= nextReport) report();
    }
    // Reports what is left.
    void finish();

private:
    void report();
    void reportUpTo(std::size_t keysDone);

    VXProgress* progress;
    std::size_t keys;
    std::uint64_t votes;
    std::uint64_t votesDone = 0;
    std::uint64_t nextReport = 0;
    std::size_t counter = 0;
    std::int32_t lastPercentage = 0;
};

} // namespace VXS

#endif
