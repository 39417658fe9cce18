#pragma once

#include <cstdint>
#include <optional>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/device/device.h"

namespace devkit::prntvpt {

// A page and the part of it that can be printed on, in micrometres, as the page is looked at: turned with the
// orientation where the device reports it so.
struct ImageableSize {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t originX = 0;
    std::int64_t originY = 0;
    std::int64_t extentX = 0;
    std::int64_t extentY = 0;
};

enum class Orientation { Portrait, Landscape, ReversePortrait, ReverseLandscape };

// The margins of a sheet as they lie round a page of that orientation. Landscape content is turned by 90
// degrees counter-clockwise on the sheet, so its top edge lies at the sheet's left edge.
[[nodiscard]] Margins TurnMargins(const Margins& sheet, Orientation orientation);

// That of the sheet that a valid ticket selects; nothing when its size cannot be told. When
// `orientationCounts` is false the page is that of the sheet in portrait.
[[nodiscard]] std::optional<ImageableSize> ImageableSizeOf(const Device& device, const Element& ticket,
                                                           bool orientationCounts);

}  // namespace devkit::prntvpt
