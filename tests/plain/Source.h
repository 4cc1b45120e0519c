#ifndef PLAIN_SOURCE_H
#define PLAIN_SOURCE_H

#include <cstdint>
#include <vector>

namespace plain
{

// Where samples come from.
class Source
{
public:
    // Samples that the source says it has.
    virtual std::uint32_t frames() = 0;
    // Fills the block with the next samples; what is past the end keeps what it held.
    virtual void read(std::vector<float>& block) = 0;
    // Back to the first sample.
    virtual void rewind() = 0;

protected:
    ~Source() = default;
};

} // namespace plain

#endif
