#include "devkit/filterhost/numbers.h"

#include <array>
#include <charconv>

namespace devkit::filterhost {

std::string NumberText(double number) {
    std::array<char, 400> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed).ptr;
    return {text.data(), end};
}

std::string Counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace devkit::filterhost
