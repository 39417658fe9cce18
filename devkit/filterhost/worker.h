#pragma once

#include <string_view>

#include "devkit/filterhost/exitstatus.h"

namespace devkit::filterhost {

// The command of a process that runs one filter over one document for another process of this program: see
// ChildProcess.
inline constexpr std::string_view kWorkCommand = "work";
// What is sent to it after the order, to cancel the job.
inline constexpr std::string_view kCancelCommand = "cancel";

// Takes the order from one handle and tells the events to the other, both as numbers. Ends the process when
// the work is done, or its parent gone.
[[noreturn]] void Work(std::string_view readHandle, std::string_view writeHandle);

}  // namespace devkit::filterhost
