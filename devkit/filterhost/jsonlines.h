#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace devkit::filterhost {

// The line, from 1, of each member and element of a JSON text, by the keys and places that lead to it:
// "/constraints/0/when". Empty for what is no JSON.
[[nodiscard]] std::map<std::string, std::size_t> LinesOf(std::string_view json);

}  // namespace devkit::filterhost
