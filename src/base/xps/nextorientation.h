#pragma once

#include <cstdint>

namespace base::xps {

// The page orientation option that a page of the given one has after a quarter turn of its sheet: the next in
// the order Landscape, Portrait, ReverseLandscape, ReversePortrait, and the first after the last.
// base::exception::Error for an id that is none of the four.
[[nodiscard]] std::int32_t NextOrientation(std::int32_t optionId);

}  // namespace base::xps
