#include "devkit/prntvpt/api/lastticket.h"

#include <utility>

namespace devkit::prntvpt {

LastTicket::DocumentPtr LastTicket::Find(std::string_view bytes) const {
    const std::lock_guard guard(m_lock);
    return bytes == m_bytes ? m_pDocument : nullptr;
}

void LastTicket::Keep(std::string bytes, DocumentPtr pDocument) {
    const std::lock_guard guard(m_lock);
    m_bytes = std::move(bytes);
    m_pDocument = std::move(pDocument);
}

}  // namespace devkit::prntvpt
