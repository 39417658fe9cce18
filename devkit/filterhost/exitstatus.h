#pragma once

namespace devkit::filterhost {

// The exit status of the program; with several inputs the highest counts.
enum ExitStatus : int {
    Done = 0,
    FilterFailed = 1,
    WrongUsage = 2,
    UnreadableInput = 3,
    RuleBroken = 4,
};

}  // namespace devkit::filterhost
