#pragma once

#include <set>
#include <vector>

#include "devkit/prntvpt/device/parameterdefinition.h"

namespace devkit::prntvpt {

// How a ticket selects what capabilities offer.

// The option of a ticket that selects the device's option: its name and its scored properties, no properties.
[[nodiscard]] Element SelectOption(const Element& offered);

// The parameters that the elements refer to, at any level.
[[nodiscard]] std::set<QName> ReferencesOf(const std::vector<Element>& elements);

// The value of a scored property of the ticket, through its reference to a parameter; null when it has none.
[[nodiscard]] const TypedValue* ResolveValue(const Element& scoredProperty, const Element& ticket);

}  // namespace devkit::prntvpt
