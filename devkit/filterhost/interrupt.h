#pragma once

#include <functional>

namespace devkit::filterhost {

// What a shell calls the status of a program that Ctrl+C ended.
inline constexpr int kInterrupted = 130;

// From here on Ctrl+C ends the program with kInterrupted, at once unless an Interrupt lives.
void EndOnInterrupt();

// While it lives, the first Ctrl+C calls `cancel`, on a thread of the system's; the next ends the program at
// once. One at a time.
class Interrupt {
  public:
    explicit Interrupt(std::function<void()> cancel);
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    // Waits until `cancel` has returned.
    ~Interrupt();
};

}  // namespace devkit::filterhost
