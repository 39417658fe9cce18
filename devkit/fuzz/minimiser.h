#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace devkit::fuzz {

// Of `count` things, in their order, those few that are needed for `isSame` to hold: halves are left out
// first, then smaller pieces, at last one by one. `isSame` is asked at most `mostTries` times, never for all
// of them. Without any of the rest what is given back holds it, too, as far as the tries reached.
[[nodiscard]] std::vector<std::size_t> Minimise(
    std::size_t count, const std::function<bool(const std::vector<std::size_t>&)>& isSame,
    unsigned mostTries);

}  // namespace devkit::fuzz
