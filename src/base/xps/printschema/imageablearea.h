#pragma once

#include "platform/windows.h"

#include "base/xps/printschema/mediasizetable.h"

namespace base::xps::printschema {

// Where on a sheet the printer can print, in micrometres: the whole page as the printer counts it, and within
// it the printable rectangle's corner and extent.
struct ImageableAreaInfo {
    MediaDimensions imageableSize;
    MediaDimensions origin;
    MediaDimensions extent;

    [[nodiscard]] bool operator==(const ImageableAreaInfo&) const = default;
};

// Knows the imageable area of a medium.
class ImageableAreaSource {
  public:
    virtual ~ImageableAreaSource() = default;

    // S_OK with the whole area. After a failure, which says that the area is not known, the area is as far as
    // it could be read.
    [[nodiscard]] virtual HRESULT GetImageableArea(const MediaSizeOption& mediaSize,
                                                   ImageableAreaInfo& area) = 0;
};

}  // namespace base::xps::printschema
