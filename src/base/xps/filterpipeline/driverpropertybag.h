#pragma once

#include "platform/windows.h"

#include <optional>

#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/printerpropertybag.h"

namespace base::xps::filterpipeline {

// The values that the driver publishes in its own property bag, the pipeline property "DriverPropertyBag". A
// bag that is missing or of another kind, and a value that it lacks, are no failures: older drivers have
// neither.
class DriverPropertyBag {
  public:
    explicit DriverPropertyBag(IPrintPipelinePropertyBag* pPipelineBag);

    [[nodiscard]] std::optional<LONG> ReadInt32(const wchar_t* name) const;
    // Empty when there is no such value.
    [[nodiscard]] platform::Bstr ReadString(const wchar_t* name) const;

  private:
    platform::ComPtr<IPrinterPropertyBag> m_pBag;
};

}  // namespace base::xps::filterpipeline
