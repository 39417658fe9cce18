#pragma once

#include "platform/windows.h"

#include <iosfwd>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

namespace base::xps {

// A page under validation, and what the rewrite of its markup needs of it: operations that give a reference
// of the caller's own and throw HresultError when the page refuses.
class FixedPageSource {
  public:
    virtual void Validate() = 0;
    [[nodiscard]] virtual platform::ComPtr<IPrintReadStream> GetPageReadStream() = 0;
    [[nodiscard]] virtual platform::ComPtr<IPrintWriteStream> GetPageWriteStream() = 0;
    // A handler that writes the new markup into the sink, which must outlive it.
    [[nodiscard]] virtual platform::ComPtr<ISAXContentHandler> CreateContentHandler(std::ostream& sink) = 0;

  protected:
    FixedPageSource() = default;
    FixedPageSource(const FixedPageSource&) = default;
    FixedPageSource& operator=(const FixedPageSource&) = delete;
    // Nobody owns a page through this class.
    ~FixedPageSource() = default;
};

}  // namespace base::xps
