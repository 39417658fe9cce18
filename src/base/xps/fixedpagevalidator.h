#pragma once

#include "platform/windows.h"

#include "base/xps/fixedpagesource.h"
#include "base/xps/pageticket.h"
#include "base/xps/printschema/imageableareahandler.h"
#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/printticketprovider.h"
#include "base/xps/printschema/scalingdata.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

namespace base::xps {

// Validates one fixed page against the paper path. A page whose sheet would be fed by the wrong edge is
// turned; a page whose sheet the device cannot print gets one that it can. Either gives the page a new
// ticket, the turn alone new markup; a page that needs neither is left as it is. Made for one page, used
// once.
//
// Sizes are in micrometres. The settings are copied; the provider, the writer and the page are borrowed and
// must outlive the validator.
class FixedPageValidator final : public FixedPageSource {
  public:
    // Chooses the sheet to fall back to, by the document's ticket and then the job's, never the page's own,
    // and takes a landscape page as the next orientation with its sheet turned. std::invalid_argument when
    // the writer or the page is null; a failure to get a ticket passes through.
    FixedPageValidator(printschema::PrintTicketProvider& provider, IXpsDocumentConsumer* pXpsDocuConsumer,
                       IFixedPage* pPage, const printschema::InputBinData& feedDirection,
                       const printschema::MediaSizeData& mediaSize,
                       const printschema::PageOrientationData& pageOrientation,
                       const printschema::ScalingData& pageScaling,
                       const printschema::PrintableMediaSizeData& printableMediaSize);

    // Throws what fails, and takes nothing back: a page whose new ticket failed may be left without one.
    void Validate() override;

    // The page's content streams. HresultError when the page refuses.
    [[nodiscard]] platform::ComPtr<IPrintReadStream> GetPageReadStream() override;
    [[nodiscard]] platform::ComPtr<IPrintWriteStream> GetPageWriteStream() override;
    // Turns the page by 270 degrees and does not scale it.
    [[nodiscard]] platform::ComPtr<ISAXContentHandler> CreateContentHandler(std::ostream& sink) override;

    // Borrowed; null, which it is at first, for a fallback sheet that is printable to its edges.
    void SetImageableArea(printschema::ImageableAreaSource* pSource) noexcept { m_pImageableArea = pSource; }

    // Borrowed; null, which it is at first, for a validator that makes its own.
    void SetEmptyTicket(EmptyTicket* pEmptyTicket) noexcept { m_pEmptyTicket = pEmptyTicket; }

  private:
    void NormalizeOrientation();
    [[nodiscard]] bool MustTurn() const noexcept;
    void UseFallbackMedia();
    void RewriteTicket();

    printschema::InputBinData m_feedDirection;
    printschema::MediaSizeData m_mediaSize;
    printschema::PageOrientationData m_pageOrientation;
    printschema::ScalingData m_pageScaling;
    printschema::PrintableMediaRange m_printableRange;
    IXpsDocumentConsumer* m_pXpsDocuConsumer;
    IFixedPage* m_pPage;
    printschema::MediaSizeOption m_fallback;
    printschema::ImageableAreaSource* m_pImageableArea = nullptr;
    EmptyTicket* m_pEmptyTicket = nullptr;
};

}  // namespace base::xps
