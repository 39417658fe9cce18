#pragma once

#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/device/device.h"

namespace devkit::prntvpt {

// Whether the selections of the features meet the condition; not when the feature is not among them.
[[nodiscard]] bool Meets(const Condition& condition, const std::vector<Element>& features);

// Whether the features select what the device cannot do together.
[[nodiscard]] bool Violates(const Constraint& constraint, const std::vector<Element>& features);

// Changes selections until no constraint of the device is violated, and tells whether any was. Constraints
// see the features of the scope alone.
[[nodiscard]] bool ResolveConstraints(const Device& device, std::vector<Element>& features);

}  // namespace devkit::prntvpt
