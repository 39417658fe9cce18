#pragma once

#include <cstddef>
#include <string>

namespace devkit::filterhost {

// The shortest text of the number that reads back the same: "816", "793.76". Independent of the locale.
[[nodiscard]] std::string NumberText(double number);
// "3 pages", "1 page".
[[nodiscard]] std::string Counted(std::size_t count, const std::string& what);

}  // namespace devkit::filterhost
