#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace devkit::fuzz {

// A place in a text: from `begin` up to `end`.
struct Place {
    std::size_t begin = 0;
    std::size_t end = 0;

    [[nodiscard]] std::size_t Size() const noexcept { return end - begin; }
    friend bool operator==(const Place&, const Place&) = default;
};

struct ScannedAttribute {
    Place all;  // with the white space in front
    Place name;
    Place value;  // between the quotes
};

struct ScannedElement {
    Place all;       // to the end of its end tag, or of the markup where that is missing
    Place startTag;  // "<a b="c">"
    Place name;      // in the start tag
    std::size_t depth = 0;
};

// Where elements and attributes are in markup of UTF-8 that need not be well-formed, in their order.
struct MarkupScan {
    std::vector<ScannedElement> elements;
    std::vector<ScannedAttribute> attributes;
};
[[nodiscard]] MarkupScan ScanMarkup(std::string_view markup);

}  // namespace devkit::fuzz
