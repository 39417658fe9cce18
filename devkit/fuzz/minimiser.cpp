#include "devkit/fuzz/minimiser.h"

#include <algorithm>
#include <numeric>

namespace devkit::fuzz {

std::vector<std::size_t> Minimise(std::size_t count,
                                  const std::function<bool(const std::vector<std::size_t>&)>& isSame,
                                  unsigned mostTries) {
    std::vector<std::size_t> kept(count);
    std::iota(kept.begin(), kept.end(), std::size_t{0});
    std::size_t piece = (kept.size() + 1) / 2;
    while (piece > 0 && !kept.empty()) {
        bool hasShrunk = false;
        for (std::size_t at = 0; at < kept.size();) {
            if (mostTries-- == 0) return kept;
            std::vector<std::size_t> fewer = kept;
            const auto begin = fewer.begin() + static_cast<std::ptrdiff_t>(at);
            fewer.erase(begin, begin + static_cast<std::ptrdiff_t>(std::min(piece, fewer.size() - at)));
            if (isSame(fewer)) {
                kept = std::move(fewer);
                hasShrunk = true;
            } else {
                at += piece;
            }
        }
        // One that could not go before may be able to now.
        if (piece > 1 || !hasShrunk) piece /= 2;
    }
    return kept;
}

}  // namespace devkit::fuzz
