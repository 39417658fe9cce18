#pragma once

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/fuzzsettings.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// `filterhost run`: an ExitStatus, or kInterrupted. The calling thread must stand in the multithreaded
// apartment. Throws UsageError, and std::runtime_error for a filter that is none.
[[nodiscard]] int Run(const RunSettings& settings);

// `filterhost fuzz`: an ExitStatus, or kInterrupted. The calling thread must stand in the multithreaded
// apartment. Throws UsageError, and std::runtime_error for a filter that is none.
[[nodiscard]] int Fuzz(const FuzzSettings& settings);

// `filterhost inspect`: prints each document as a tree of its parts with page sizes and tickets.
[[nodiscard]] ExitStatus Inspect(const InspectSettings& settings);

// `filterhost diff`: prints what sets two documents or two tickets apart. kSame, kDifferent or
// UnreadableInput, as programs that compare have it. Throws UsageError.
inline constexpr int kSame = 0;
inline constexpr int kDifferent = 1;
[[nodiscard]] int Diff(const DiffSettings& settings);

// `filterhost device`: what is wrong with a device model (UnreadableInput), or what it is. Throws UsageError
// when there is none.
[[nodiscard]] ExitStatus ExamineDevice(const DeviceSettings& settings);

}  // namespace devkit::filterhost
