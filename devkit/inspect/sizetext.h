#pragma once

#include <cstdint>
#include <string>

#include "devkit/package/pagedimensions.h"

namespace devkit::inspect {

// Numbers as text, with a point whatever the locale.

// "793.76 x 1122.56 (210.0 x 297.0 mm), portrait"; the first pair is 1/96 inch.
[[nodiscard]] std::string SizeText(const package::PageDimensions& page);

// "-12,-12,840,1080"
[[nodiscard]] std::string BoxText(const std::array<double, 4>& box);

// "1 byte", "1,234 bytes"
[[nodiscard]] std::string BytesText(std::uint64_t count);

}  // namespace devkit::inspect
