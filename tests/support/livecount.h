#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tests {

// A number of live objects that the leak check compares before and after each test, told by what it counts.
// Made once for each kind of object that a test program has, before its tests start; it must outlive them.
class LiveCount {
  public:
    LiveCount(std::string what, std::function<long()> count);

    struct Kind {
        std::string what;
        std::function<long()> count;
    };
    // In no particular order.
    [[nodiscard]] static const std::vector<Kind>& Kinds();
};

}  // namespace tests
