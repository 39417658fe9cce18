#pragma once

#include "platform/windows.h"

#include "base/xps/fixedpagesource.h"
#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/mediascalefactor.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/printticketprovider.h"
#include "base/xps/printschema/scalingdata.h"
#include "platform/filterpipeline.h"

namespace base::xps {

// Validates one fixed page against the paper path: decides whether the page must be turned and whether its
// sheet is one that the device can print; where either holds, gives the page a new ticket, and where it must
// be turned, rewrites its markup. A page that needs neither is left as it is. Made for one page, used once.
//
// Sizes are in micrometres. The three interfaces are borrowed and must outlive the validator; the settings
// are copied.
class FixedPageValidator : public FixedPageSource {
  public:
    // Chooses the sheet to fall back to, from the document's ticket, then the job's, never the page's own,
    // and brings a landscape orientation to the portrait it is fed as. std::invalid_argument when the writer
    // or the page is null; failures of the tickets pass through.
    FixedPageValidator(printschema::PrintTicketProvider* pProvider, IXpsDocumentConsumer* pXpsDocuConsumer,
                       IFixedPage* pPage, const printschema::InputBinData& feedDirection,
                       const printschema::MediaSizeData& mediaSize,
                       const printschema::PageOrientationData& pageOrientation,
                       const printschema::ScalingData& pageScaling,
                       const printschema::PrintableMediaSizeData& printableMediaSize);

    // Throws what fails; nothing is rolled back, so a page may then be without a ticket.
    virtual void Validate();
};

}  // namespace base::xps
