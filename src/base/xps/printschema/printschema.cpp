#include "base/xps/printschema/printschema.h"

#include <stdexcept>

#include "base/logging/check.h"

namespace base::xps::printschema {

EPrintTicketScope ToPrintTicketScope(Scope scope) {
    switch (scope) {
        case Scope::Job:
            return kPTJobScope;
        case Scope::Document:
            return kPTDocumentScope;
        case Scope::Page:
            return kPTPageScope;
        case Scope::None:
            break;
    }
    logging::Throw<std::logic_error>("Scope::None cannot convert to EPrintTicketScope.");
}

}  // namespace base::xps::printschema
