#pragma once

#include "base/xps/printschema/imageablearea.h"
#include "base/xps/printschema/mediasizetable.h"

namespace base::xps::printschema {

// The factor by which a page made for the current size must be scaled to fit on the fallback medium: the
// smaller of the two ratios of width and of height. The page is to fit into the imageable area of the medium
// when a source is given and knows it, else into the whole sheet. 1 when any length is zero or negative.
// pSource may be null.
[[nodiscard]] double MediaScaleFactor(const MediaDimensions& current, const MediaSizeOption& fallback,
                                      ImageableAreaSource* pSource);

}  // namespace base::xps::printschema
