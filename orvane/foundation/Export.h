#pragma once
// What liborvane.so exports. The library is compiled with hidden visibility, so a host reaches
// only the classes and functions marked ORVANE_API; helpers in `internal` namespaces stay
// inside. A program that links a static build of the kernel defines ORVANE_STATIC, where the
// marks mean nothing.

#if defined(ORVANE_STATIC) || !(defined(__GNUC__) || defined(__clang__))
#define ORVANE_API
#define ORVANE_LOCAL
#else
#define ORVANE_API __attribute__((visibility("default")))
// A member of an exported class that hosts never call, kept out of the exported symbols.
#define ORVANE_LOCAL __attribute__((visibility("hidden")))
#endif
