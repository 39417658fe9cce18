#include "livecount.h"

#include <utility>

namespace tests {
namespace {

// Counts are made while the program starts, in the order of its sources.
std::vector<LiveCount::Kind>& MutableKinds() {
    static std::vector<LiveCount::Kind> kinds;
    return kinds;
}

}  // namespace

LiveCount::LiveCount(std::string what, std::function<long()> count) {
    MutableKinds().push_back({std::move(what), std::move(count)});
}

const std::vector<LiveCount::Kind>& LiveCount::Kinds() { return MutableKinds(); }

}  // namespace tests
