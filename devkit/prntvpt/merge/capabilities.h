#pragma once

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/switches.h"

namespace devkit::prntvpt {

// The device's capabilities for a valid ticket of job scope: the options that a constraint would take back
// are marked, and PageImageableSize is that of the ticket's sheet. What features, options and parameters
// there are does not depend on the ticket.
[[nodiscard]] Element CapabilitiesFor(const Device& device, const Switches& behaviour, const Element& ticket);

}  // namespace devkit::prntvpt
