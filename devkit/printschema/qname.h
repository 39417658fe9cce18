#pragma once

#include <compare>
#include <string>

namespace devkit::prntvpt {

// A name with its namespace. Prefixes end where a document is read and begin where one is written; in between
// there are only these.
struct QName {
    std::string uri;
    std::string local;

    friend auto operator<=>(const QName&, const QName&) = default;
};

}  // namespace devkit::prntvpt
