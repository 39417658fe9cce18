#pragma once

#include "platform/windows.h"

#include "devkit/validate/judging.h"

namespace devkit::validate {

// What a filter may come to when something fails under it. The list is closed: nothing else is a decent end.
inline constexpr unsigned kFails = 1;  // with the code of what failed or a general one, and RequestShutdown
inline constexpr unsigned kFailsUntold = 2;   // so, and tells nobody
inline constexpr unsigned kComesThrough = 4;  // sends every part, with what it could make of it
inline constexpr unsigned kBadTicket = 8;     // may write a ticket then that is none
inline constexpr unsigned kAnyEnd = kFails | kComesThrough;

// Fails the trial unless the run, in which something failed with the code, came to one of the ends, without a
// broken rule. What it sent is compared with the plain run of its document.
void JudgeEnd(Trial& trial, const Order& order, const RunResult& result, HRESULT code, unsigned ends,
              const RunResult& plain);

}  // namespace devkit::validate
