#pragma once

#include "platform/windows.h"

#include <string>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

namespace base::xps::filterpipeline {

// The printer's default ticket for the language family that the driver names by the integer "KoraTeskType" in
// its property bag (1, 7 or 76); a printer that names none, or another one, gets the ticket of family 7. A
// new document; the thread must be in an apartment. HresultError when the document cannot be made.
[[nodiscard]] platform::ComPtr<IXMLDOMDocument2> CreateDefaultPrintTicket(
    IPrintPipelinePropertyBag* pPropertyBag);

}  // namespace base::xps::filterpipeline
