#pragma once

#include <string>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/api/fault.h"
#include "devkit/prntvpt/device/device.h"

namespace devkit::prntvpt {

// What the faults of a call do to a valid result before it is written.
void SpoilTicket(const ActiveFaults& faults, const Device& device, Element& ticket);
void SpoilCapabilities(const ActiveFaults& faults, Element& capabilities);
// And to its bytes.
void SpoilBytes(const ActiveFaults& faults, std::string& bytes);

}  // namespace devkit::prntvpt
