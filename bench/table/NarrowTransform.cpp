#include "NarrowTransform.h"

// The provider under another name, beside the one that is linked.
#undef VXS_MULTIVERSIONING
#define vxaccelerate vxaccelerateNarrow
#include "../../platform/vxaccelerate/transform.cpp"

namespace bench
{

struct NarrowTransform::State {
    vxaccelerateNarrow::FFTState_Float* transform = nullptr;
    std::unique_ptr<unsigned char[]> buffer;
};

NarrowTransform::NarrowTransform(unsigned int order) : state(std::make_unique<State>())
{
    vxaccelerateNarrow::transform::FFTInit(&state->transform, order);
    unsigned int bytes = 0;
    vxaccelerateNarrow::transform::FFTGetBufSize(state->transform, &bytes);
    state->buffer.reset(new unsigned char[bytes]);
}

NarrowTransform::~NarrowTransform()
{
    vxaccelerateNarrow::transform::FFTFree(state->transform);
}

void NarrowTransform::forward(const float* input, float* output) const
{
    vxaccelerateNarrow::transform::FFTFwd(input, output, state->transform, state->buffer.get());
}

} // namespace bench
