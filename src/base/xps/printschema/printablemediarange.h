#pragma once

#include "base/xps/printschema/mediasizetable.h"

namespace base::xps::printschema {

// The sheets that the printer accepts: from the minimum to the maximum, both included, width and height each
// for itself.
struct PrintableMediaRange {
    MediaDimensions minimum;
    MediaDimensions maximum;

    [[nodiscard]] constexpr bool Contains(const MediaDimensions& size) const noexcept {
        return size.height <= maximum.height && size.width <= maximum.width &&
               size.height >= minimum.height && size.width >= minimum.width;
    }
};

}  // namespace base::xps::printschema
