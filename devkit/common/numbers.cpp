#include "devkit/common/numbers.h"

#include <array>
#include <charconv>

namespace devkit::common {
namespace {

// The longest numbers have 309 digits before the point and 1,074 behind it.
using Digits = std::array<char, 1'400>;

}  // namespace

std::string NumberText(double number) {
    Digits text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed).ptr;
    return {text.data(), end};
}

std::string NumberText(double number, int decimals) {
    Digits text;
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, decimals).ptr;
    return {text.data(), end};
}

std::optional<double> ParseNumber(std::string_view text) {
    double number = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || pEnd != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace devkit::common
