#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "devkit/filterhost/childprocess.h"

namespace devkit::filterhost {

// The commands of the parent, read on a thread of their own: a process whose parent is gone leaves, whatever
// its other threads are doing. Lives as long as the process.
class Orders {
  public:
    // Takes a command that cannot wait, on that thread; false for one that waits its turn.
    using Urgent = std::function<bool(std::string_view)>;
    explicit Orders(ParentProcess& parent, Urgent urgent = {});
    Orders(const Orders&) = delete;
    Orders& operator=(const Orders&) = delete;

    // The next command, for which it waits. Leaves with WrongUsage where there never was one.
    [[nodiscard]] std::string Next();

  private:
    [[noreturn]] void Listen();

    ParentProcess& m_parent;
    const Urgent m_urgent;
    std::mutex m_lock;
    std::condition_variable m_changed;
    std::deque<std::string> m_commands;
};

}  // namespace devkit::filterhost
