#pragma once

// The one way into the Windows headers: every other header of the tree that needs them includes this file, so
// that the same switches hold everywhere. The target system and UNICODE are set on the compiler's command
// line.
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <objbase.h>
#include <ole2.h>
#include <oleauto.h>
#include <windows.h>
