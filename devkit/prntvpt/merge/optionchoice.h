#pragma once

#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/merge/passstate.h"

namespace devkit::prntvpt {

// An option of the device, and the option of the ticket that it was chosen for; none for a default.
struct ChosenOption {
    const Element* pOffered = nullptr;
    const Element* pAsked = nullptr;
    bool exact = false;
};

// Whether a ticket can select the option: it is not constrained by the administrator or by what the device
// has fitted, and no strict filter removes it.
[[nodiscard]] bool IsSelectable(const Element& option, const Switches& behaviour);

// The options that stand for what the ticket's feature asks for; the default ones where it asks for nothing
// that the device has. Notes a conflict in the state where the ticket does not get what it asks for.
[[nodiscard]] std::vector<ChosenOption> ChooseOptions(const Element& offeredFeature,
                                                      const Element* pAskedFeature,
                                                      const Element* pDefaultFeature, PassState& state);

}  // namespace devkit::prntvpt
