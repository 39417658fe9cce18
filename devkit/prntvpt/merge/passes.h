#pragma once

#include <set>
#include <vector>

#include "devkit/prntvpt/merge/passstate.h"

namespace devkit::prntvpt {

// One feature for each root feature of the device that takes part, in the device's order: what the ticket
// asks for where the device has it, the default elsewhere. Features that the device lacks are dropped. Notes
// conflicts and carried values in the state.
[[nodiscard]] std::vector<Element> ValidateFeatures(PassState& state);

// The ParameterInits of a valid ticket, in the device's order: those of the ticket brought into their range,
// and defaults for those that are missing and either unconditional or referred to. `dropped` are references
// that the resolution of constraints ended; such a conditional parameter goes. Notes conflicts in the state.
[[nodiscard]] std::vector<Element> ValidateParameters(PassState& state, const std::set<QName>& references,
                                                      const std::set<QName>& dropped);

}  // namespace devkit::prntvpt
