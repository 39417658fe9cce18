#pragma once

#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/merge/passstate.h"

namespace devkit::prntvpt {

// The option of a ticket that selects the device's option: its name and its scored properties, no properties.
[[nodiscard]] Element SelectOption(const Element& offered);

// One feature for each root feature of the device that takes part, in the device's order: what the ticket
// asks for where the device has it, the default elsewhere. Features that the device lacks are dropped. Notes
// conflicts and carried values in the state.
[[nodiscard]] std::vector<Element> ValidateFeatures(PassState& state);

}  // namespace devkit::prntvpt
