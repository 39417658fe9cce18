#pragma once

#include <string>
#include <vector>

#include "devkit/printschema/element.h"
#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/merge/switches.h"

namespace devkit::prntvpt {

struct SerializerInput {
    std::vector<std::string> privateUris;                   // the device's, the first is ns0000
    std::vector<printschema::PrefixBinding> inputPrefixes;  // of the tickets that the document was made from
};

// The bytes of the document as the switches prefixes, order, encoding and whitespace want them.
[[nodiscard]] std::string Serialize(const Element& root, const Switches& behaviour,
                                    const SerializerInput& input);

}  // namespace devkit::prntvpt
