#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "devkit/common/limits.h"

namespace devkit::package {

// A relationship, from a part or from the package as a whole.
struct Relationship {
    std::string id;
    std::string type;
    std::string target;  // as written: relative to the source part, or absolute
    bool external = false;

    bool operator==(const Relationship&) const = default;
};

// In the order of the markup. `where` names the relationships part in the common::Error for markup that
// cannot be read.
[[nodiscard]] std::vector<Relationship> ParseRelationships(std::string_view markup, const std::string& where,
                                                           const common::XmlLimits& limits);

// UTF-8.
[[nodiscard]] std::string RelationshipsMarkup(const std::vector<Relationship>& relationships);

// "R1", or the first number after that which no relationship of the list has for its id.
[[nodiscard]] std::string FreeId(const std::vector<Relationship>& relationships);

}  // namespace devkit::package
