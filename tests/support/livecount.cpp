#include "livecount.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tests {

LiveCount::LiveCount(std::string what, std::function<long()> count) {
    Kinds().push_back({std::move(what), std::move(count)});
}

void LiveCount::ExpectLeft(std::string_view what, long count) {
    const auto found = std::ranges::find(Kinds(), what, &Kind::what);
    if (found == Kinds().end()) throw std::invalid_argument("nobody counts " + std::string(what));
    found->left = count;
}

std::vector<LiveCount::Kind>& LiveCount::Kinds() {
    // Counts are made while the program starts, in the order of its sources.
    static std::vector<Kind> kinds;
    return kinds;
}

}  // namespace tests
