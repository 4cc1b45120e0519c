#ifndef VXS_VXEXPORT_H
#define VXS_VXEXPORT_H

// Marks what crosses the boundary of the shared library. Everything that does not carry the mark
// stays hidden. The library's own build defines VXS_BUILDING, programs that take the sources into
// themselves define VXS_STATIC, and a host defines nothing.
#if defined(_WIN32) && !defined(VXS_STATIC)
#if defined(VXS_BUILDING)
#define VXS_API __declspec(dllexport)
#else
#define VXS_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define VXS_API __attribute__((visibility("default")))
#else
#define VXS_API
#endif

// Marks what an installed header declares for the library's own use. It is not exported: a host
// that calls it does not link.
#if defined(__GNUC__) && !defined(_WIN32)
#define VXS_INTERNAL __attribute__((visibility("hidden")))
#else
#define VXS_INTERNAL
#endif

#endif
