#pragma once

#include <stdexcept>

namespace devkit::filterhost {

// The exit status of the program; with several inputs the highest counts.
enum ExitStatus : int {
    Done = 0,
    FilterFailed = 1,
    WrongUsage = 2,
    UnreadableInput = 3,
    RuleBroken = 4,
};

// What the caller asked for cannot be done as asked, which is WrongUsage; one line of text.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace devkit::filterhost
