#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

// A number of live objects that the leak check compares before and after each test, told by what it counts.
// Made once for each kind of object that a test program has, before its tests start; it must outlive them.
class LiveCount {
  public:
    LiveCount(std::string what, std::function<long()> count);

    // The running test leaves so many of that kind on purpose. Throws std::invalid_argument for a kind that
    // the program does not count.
    static void ExpectLeft(std::string_view what, long count);

    struct Kind {
        std::string what;
        std::function<long()> count;
        long left = 0;  // on purpose
    };
    // In no particular order.
    [[nodiscard]] static std::vector<Kind>& Kinds();
};

}  // namespace tests
