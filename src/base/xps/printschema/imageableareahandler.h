#pragma once

#include "platform/windows.h"

#include "base/xps/printschema/mediasizetable.h"
#include "base/xps/printschema/printticketprovider.h"

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

// Finds the imageable area of a medium by asking for the printer's capabilities under a page ticket that
// selects it.
class ImageableAreaHandler : public ImageableAreaSource {
  public:
    // The provider is borrowed and must outlive the handler.
    explicit ImageableAreaHandler(PrintTicketProvider& provider) noexcept : m_provider(provider) {}

    // The page ticket is copied, not changed. Throws HresultError when the page ticket, its copy or the
    // capabilities cannot be had; a value that the capabilities do not state, or not as an integer, is the
    // result, and the values behind it are not read.
    [[nodiscard]] HRESULT GetImageableArea(const MediaSizeOption& mediaSize,
                                           ImageableAreaInfo& area) override;

  private:
    PrintTicketProvider& m_provider;
};

// The factor by which a page made for the current size must be scaled to fit on the fallback medium: the
// smaller of the two ratios of width and of height. The page is to fit into the imageable area of the medium
// when a source is given and knows it, else into the whole sheet. 1 when any length is zero or negative.
// pSource may be null.
[[nodiscard]] double MediaScaleFactor(const MediaDimensions& current, const MediaSizeOption& fallback,
                                      ImageableAreaSource* pSource);

}  // namespace base::xps::printschema
