#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/prntvpt/device/parameterdefinition.h"

namespace devkit::prntvpt {

// A device model that cannot be read, or contradicts itself; one line that names the file.
class DeviceError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// What cannot be printed on at each edge of a sheet in portrait, in micrometres.
struct Margins {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;
};

// One side of a constraint: the selected option of a root feature is one of those, or none of those, or has a
// scored property with a number above a limit.
struct Condition {
    enum class Kind { OneOf, NoneOf, Above };

    Kind kind = Kind::OneOf;
    QName feature;
    std::vector<QName> options;  // OneOf, NoneOf
    QName scoredProperty;        // Above
    std::int64_t limit = 0;      // Above
};

// Two settings that the device cannot do together, and what it does instead.
struct Constraint {
    Condition when;
    Condition with;
    QName feature;
    QName option;
};

struct Device {
    std::vector<std::string> printers;
    // Every feature, parameter and option that the device has, and root properties.
    Element capabilities;
    // A ticket that selects an option of every feature: capabilities do not say which are the defaults.
    Element defaultTicket;
    Margins margins;
    std::map<QName, Margins> optionMargins;  // by option of PageMediaSize
    std::vector<Constraint> constraints;     // tried in this order
    std::vector<std::string> variants;       // "KEY=VALUE" switches that are part of the model

    // What follows from the capabilities; set by Index.
    std::vector<ParameterDefinition> parameters;
    std::vector<std::string> privateUris;  // in the order of their first use
    // Fills the members above. FormatError when a parameter's definition makes no sense.
    void Index();

    [[nodiscard]] const ParameterDefinition* FindParameter(const QName& name) const;
    // Whether names of the namespace are public or used by the capabilities.
    [[nodiscard]] bool Knows(const std::string& uri) const;
};

// Reads the model in the folder: device.json and, unless it extends a model that has them, capabilities.xml
// and default-ticket.xml. The file devkit/devices/README.md describes them. DeviceError.
[[nodiscard]] Device LoadDevice(const std::filesystem::path& folder);

}  // namespace devkit::prntvpt
