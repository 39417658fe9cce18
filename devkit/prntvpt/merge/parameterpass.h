#pragma once

#include <set>
#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/merge/passstate.h"

namespace devkit::prntvpt {

// The parameters that the selected options refer to.
[[nodiscard]] std::set<QName> ReferencesOf(const std::vector<Element>& features);

// The ParameterInits of a valid ticket, in the device's order: those of the ticket brought into their range,
// and defaults for those that are missing and either unconditional or referred to. `dropped` are references
// that the resolution of constraints ended; such a conditional parameter goes. Notes conflicts in the state.
[[nodiscard]] std::vector<Element> ValidateParameters(PassState& state, const std::set<QName>& references,
                                                      const std::set<QName>& dropped);

}  // namespace devkit::prntvpt
