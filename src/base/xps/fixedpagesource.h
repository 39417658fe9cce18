#pragma once

#include "platform/windows.h"

#include <iosfwd>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

namespace base::xps {

// What the rewrite of a page's markup needs of the page. Each operation gives a reference of the caller's own
// and throws HresultError when the page refuses.
class FixedPageSource {
  public:
    virtual ~FixedPageSource() = default;

    [[nodiscard]] virtual platform::ComPtr<IPrintReadStream> GetPageReadStream() = 0;
    [[nodiscard]] virtual platform::ComPtr<IPrintWriteStream> GetPageWriteStream() = 0;
    // A handler that writes the new markup into the sink, which must outlive it.
    [[nodiscard]] virtual platform::ComPtr<ISAXContentHandler> CreateContentHandler(std::ostream& sink) = 0;
};

}  // namespace base::xps
