#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace devkit::common {

// Independent of the locale.

// The shortest text without an exponent that reads back as the number: "816", "793.76".
[[nodiscard]] std::string NumberText(double number);
// With so many digits behind the point: "210.0".
[[nodiscard]] std::string NumberText(double number, int decimals);

// The decimal number, with or without an exponent, that the text is as a whole; nothing for any other text.
[[nodiscard]] std::optional<double> ParseNumber(std::string_view text);

}  // namespace devkit::common
