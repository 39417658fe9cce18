#pragma once

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/device/device.h"

namespace devkit::prntvpt {

// What the two sides of a comparison refer to when they name a parameter.
struct ParameterSource {
    const Element& ticket;  // its ParameterInits
    const Device& device;   // its ParameterDefs
};

// How well an option of the device fits the option that a ticket asks for.
struct OptionScore {
    int score = 0;
    bool nameEqual = false;
    int equalProperties = 0;  // scored properties of the same value
    bool exact = false;       // the ticket's option is this one in all that it says

    // A common name or one equal scored property makes an option eligible.
    [[nodiscard]] bool Matches() const { return nameEqual || equalProperties != 0; }
};

[[nodiscard]] OptionScore ScoreOption(const Element& asked, const Element& offered,
                                      const ParameterSource& parameters);

}  // namespace devkit::prntvpt
