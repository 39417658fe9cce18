#include "base/xps/printschema/mediascalefactor.h"

#include <algorithm>

namespace base::xps::printschema {
namespace {

[[nodiscard]] bool HasArea(const MediaDimensions& size) noexcept { return size.width > 0 && size.height > 0; }

[[nodiscard]] MediaDimensions SizeToFill(const MediaSizeOption& medium, ImageableAreaSource* pSource) {
    ImageableAreaInfo area;
    const bool known = pSource != nullptr && SUCCEEDED(pSource->GetImageableArea(medium, area));
    return known ? area.extent : medium.size;
}

}  // namespace

double MediaScaleFactor(const MediaDimensions& current, const MediaSizeOption& fallback,
                        ImageableAreaSource* pSource) {
    const MediaDimensions filled = SizeToFill(fallback, pSource);
    if (!HasArea(current) || !HasArea(filled)) return 1.0;
    return std::min(static_cast<double>(filled.width) / current.width,
                    static_cast<double>(filled.height) / current.height);
}

}  // namespace base::xps::printschema
