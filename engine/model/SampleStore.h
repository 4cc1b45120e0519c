#ifndef VXL_SYNC_SAMPLESTORE_H
#define VXL_SYNC_SAMPLESTORE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace vxlsync
{

// The samples of one channel, kept in blocks. A block in which nothing is heard takes no memory, so
// that hours of silence, which cost a file a few bytes, cost no more here. Stored is float, or
// std::uint16_t for the upper half of a float: eight bits of mantissa at any level, which is all
// that a measurement of phases needs.
template <typename Stored>
class SampleStore
{
public:
    static constexpr std::size_t blockSize = 4096;

    void append(const float* samples, std::size_t count);
    void appendSilence(std::size_t count);
    void clear();

    std::size_t size() const { return length; }
    // Memory that the samples take.
    std::size_t bytes() const;
    // False if all of the range is silent. Requires from + count <= size().
    bool hasSound(std::size_t from, std::size_t count) const;
    // Requires from + count <= size().
    void copy(std::size_t from, std::size_t count, float* out) const;

private:
    // Of blockSize samples, or null where all are zero.
    std::vector<std::unique_ptr<Stored[]>> blocks;
    std::size_t length = 0;
    std::size_t heldBlocks = 0;
};

extern template class SampleStore<float>;
extern template class SampleStore<std::uint16_t>;

} // namespace vxlsync

#endif
