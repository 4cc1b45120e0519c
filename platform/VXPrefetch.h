#ifndef VXS_VXPREFETCH_H
#define VXS_VXPREFETCH_H

// Asks for the memory at an address, so that it is at hand when it is read some steps later. A hint
// without any other effect, and nothing where the compiler has no such thing.
#if defined(__GNUC__)
#define VXS_PREFETCH(address) __builtin_prefetch(address)
#else
#define VXS_PREFETCH(address) static_cast<void>(address)
#endif

#endif
