#pragma once

#include "platform/windows.h"

#include <string>
#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/switches.h"
#include "platform/prntvpt.h"

namespace devkit::prntvpt {

struct ValidatedTicket {
    Element ticket;
    bool conflict = false;           // a setting had to be changed
    std::vector<std::string> notes;  // one line each
};

// Merges the delta, when there is one, into the base, and makes the outcome a complete and valid ticket of
// the device for the scope: its order is that of the device, or that of the input under order=input. A ticket
// that came out of here comes out of here unchanged.
[[nodiscard]] ValidatedTicket MergeAndValidate(const Device& device, const Switches& behaviour, Element base,
                                               const Element* pDelta, EPrintTicketScope scope);

}  // namespace devkit::prntvpt
