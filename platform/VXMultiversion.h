#ifndef VXS_VXMULTIVERSION_H
#define VXS_VXMULTIVERSION_H

// Marks a function of plain loops that is to be compiled once for each width of the processor's
// vector registers; the widest that the machine has is picked when the library is loaded. The bits
// of the results are the same in each. It takes effect where the build defines VXS_MULTIVERSIONING,
// which it does only together with the flag that forbids fused multiply-add: the wider versions
// could use it, and would then give other bits.
#if defined(VXS_MULTIVERSIONING) && defined(__x86_64__) && defined(__linux__)
#define VXS_MULTIVERSION __attribute__((target_clones("default", "avx2", "avx512f")))
#else
#define VXS_MULTIVERSION
#endif

#endif
