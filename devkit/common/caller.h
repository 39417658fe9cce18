#pragma once

#ifdef _MSC_VER
#include <intrin.h>
#endif

// Where the function that stands here was called from, as an address behind the call. No function can tell:
// it would be its own caller's.
#ifdef _MSC_VER
#define DEVKIT_CALLER _ReturnAddress()
#else
#define DEVKIT_CALLER __builtin_return_address(0)
#endif
