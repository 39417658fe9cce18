#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace tests {

// Holds threads back until so many have come, then lets all of them through. In the place of std::barrier and
// std::latch, which in the library of MinGW's g++ 12 look whether there is anything to wait for before they
// take the lock under which they wait: the call that comes in between wakes nobody.
class Gate {
  public:
    explicit Gate(std::size_t threads) noexcept : m_missing(threads) {}

    void Pass() {
        std::unique_lock guard(m_lock);
        if (--m_missing == 0) m_open.notify_all();
        m_open.wait(guard, [this] { return m_missing == 0; });
    }

  private:
    std::mutex m_lock;
    std::condition_variable m_open;
    std::size_t m_missing;
};

}  // namespace tests
