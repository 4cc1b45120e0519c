#ifndef VXACCELERATE_TRANSFORM_H
#define VXACCELERATE_TRANSFORM_H

// The forward real transform behind the library's extraction. A platform that has an accelerated
// transform of its own implements these four operations and is linked in place of the provider
// beside this header.
//
// Separate states may be used from separate threads at once. So may one state, with separate work
// buffers, since a transform does not change it.
namespace vxaccelerate
{

// Owned and laid out by the provider.
struct FFTState_Float;

namespace transform
{

// Creates the state of a transform of 2 to the power of `order` samples and answers 0. Orders from
// 3 to 20 at least must work. Of an order that it cannot serve a provider answers another number
// and leaves the state null. Running out of memory throws std::bad_alloc.
int FFTInit(FFTState_Float** state, unsigned int order);

// Stores the size in bytes of the work buffer that FFTFwd needs; 0 for a null state.
int FFTGetBufSize(const FFTState_Float* state, unsigned int* bytes);

// Transforms the first n samples of `input`, n being the size of the state. `output` receives n
// floats: at 2k and 2k + 1 the real and imaginary part of bin k, for k from 0 to n/2 - 1, with the
// kernel exp(-2 pi i j k / n) and no scaling. The imaginary part of bin 0 is 0, and the bin at half
// the rate is not delivered. `buffer` is a block from new unsigned char[] of the size told, and
// what it holds before does not matter. Input and output must not overlap. Nothing happens with a
// null state.
int FFTFwd(const float* input, float* output, const FFTState_Float* state, unsigned char* buffer);

// Releases a state; null is nothing to do.
int FFTFree(FFTState_Float* state);

} // namespace transform
} // namespace vxaccelerate

#endif
