#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/runevent.h"
#include "devkit/filterhost/settings.h"

namespace devkit::filterhost {

// The command of a process that works on the orders of another process of this program, one after the other:
// see ChildProcess.
inline constexpr std::string_view kWorkCommand = "work";
// What is sent to it between two orders, to cancel the job that goes on and all later ones.
inline constexpr std::string_view kCancelCommand = "cancel";

// What an order can ask for by name instead of a run over its document. It tells what it finds, and may throw
// what HostedRun throws.
using Probe = std::function<void(const Order& order, const EventSink& sink)>;
using Probes = std::map<std::string, Probe, std::less<>>;

// Takes orders from one handle and tells the events of each to the other, both as numbers. Ends the process
// when its parent is gone, or when an order has left something of a filter behind that nothing can run
// beside.
[[noreturn]] void Work(std::string_view readHandle, std::string_view writeHandle, const Probes& probes);

}  // namespace devkit::filterhost
