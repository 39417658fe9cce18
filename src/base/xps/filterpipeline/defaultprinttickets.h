#pragma once

#include "platform/windows.h"

#include <string>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

namespace base::xps::filterpipeline {

// The printer's default ticket for a printer language family: 1, 76 or 7, which stands for every other number
// as well.
[[nodiscard]] std::wstring DefaultPrintTicketText(LONG teskType);

// The same as a new document, for the family that the driver names by the integer "KoraTeskType" in its
// property bag; for family 7 when it names none. The thread must be in an apartment. HresultError when the
// document cannot be made.
[[nodiscard]] platform::ComPtr<IXMLDOMDocument2> CreateDefaultPrintTicket(
    IPrintPipelinePropertyBag* pPropertyBag);

}  // namespace base::xps::filterpipeline
