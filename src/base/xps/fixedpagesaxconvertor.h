#pragma once

#include "base/xps/fixedpagesource.h"

namespace base::xps {

// Rewrites a page's markup by streaming it through the system's SAX reader into the source's content handler,
// whose output replaces the page's markup.
class FixedPageSaxConvertor {
  public:
    // Writes the whole new markup, closes it, and leaves the page's read stream at its start. Throws
    // HresultError with the reader's code when the reader cannot be made or the markup cannot be parsed, read
    // or written, and std::overflow_error when the last block cannot be written. After a failure the new
    // markup is not closed, so that a part of a page never counts as a page, and no more of it is written.
    void Convert(FixedPageSource& source) const;
};

}  // namespace base::xps
