#ifndef VXS_BENCH_NARROWTRANSFORM_H
#define VXS_BENCH_NARROWTRANSFORM_H

#include <memory>

namespace bench
{

// The provider of the transform once more, for the registers that every processor of the platform
// has: a yardstick that stays the same where the library finds wider ones.
class NarrowTransform
{
public:
    explicit NarrowTransform(unsigned int order);
    ~NarrowTransform();
    NarrowTransform(const NarrowTransform&) = delete;
    NarrowTransform& operator=(const NarrowTransform&) = delete;

    void forward(const float* input, float* output) const;

private:
    struct State;
    std::unique_ptr<State> state;
};

} // namespace bench

#endif
