#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "devkit/common/limits.h"
#include "devkit/common/xmlreader.h"

namespace devkit::package {

// The root of a page's markup. Lengths are 1/96 inch.
struct PageDimensions {
    double width = 0;
    double height = 0;
    // x, y, width, height
    std::optional<std::array<double, 4>> bleedBox;
    std::optional<std::array<double, 4>> contentBox;
};

// Reads the start of the markup only. Empty when it does not start as a FixedPage with a width and a height.
[[nodiscard]] std::optional<PageDimensions> ReadPageDimensions(
    std::string_view markup, const common::XmlLimits& limits = common::Limits().page);
// Of the element that the reader stands at. Empty when it is no FixedPage with a width and a height.
[[nodiscard]] std::optional<PageDimensions> ReadPageDimensions(const common::XmlReader& reader);

}  // namespace devkit::package
