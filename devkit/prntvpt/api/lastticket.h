#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "devkit/printschema/reader.h"

namespace devkit::prntvpt {

// The ticket that was read last: the base of page after page is the same, and reading it takes longer than
// merging and writing. Any thread may use it.
class LastTicket {
  public:
    using DocumentPtr = std::shared_ptr<const printschema::FrameworkDocument>;

    // Null for other bytes than those of the ticket.
    [[nodiscard]] DocumentPtr Find(std::string_view bytes) const;
    void Keep(std::string bytes, DocumentPtr pDocument);

  private:
    mutable std::mutex m_lock;
    std::string m_bytes;
    DocumentPtr m_pDocument;
};

}  // namespace devkit::prntvpt
