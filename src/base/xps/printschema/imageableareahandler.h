#pragma once

#include "platform/windows.h"

#include "base/xps/printschema/imageablearea.h"
#include "base/xps/printschema/printticketprovider.h"

namespace base::xps::printschema {

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

}  // namespace base::xps::printschema
