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

#endif
