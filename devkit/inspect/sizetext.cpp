#include "devkit/inspect/sizetext.h"

#include <charconv>
#include <system_error>

namespace devkit::inspect {

namespace {

constexpr double kMillimetresPerUnit = 25.4 / 96;

// The shortest text that reads back as the number.
std::string NumberText(double number) {
    std::array<char, 32> text{};
    const auto [pEnd, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return {text.data(), error == std::errc() ? pEnd : text.data()};
}

std::string MillimetreText(double units) {
    // The largest double has 309 digits before the point.
    std::array<char, 320> text{};
    const auto [pEnd, error] = std::to_chars(text.data(), text.data() + text.size(),
                                             units * kMillimetresPerUnit, std::chars_format::fixed, 1);
    return {text.data(), error == std::errc() ? pEnd : text.data()};
}

const char* ShapeText(const package::PageDimensions& page) {
    if (page.width > page.height) return "landscape";
    return page.width < page.height ? "portrait" : "square";
}

}  // namespace

std::string SizeText(const package::PageDimensions& page) {
    return NumberText(page.width) + " x " + NumberText(page.height) + " (" + MillimetreText(page.width) +
           " x " + MillimetreText(page.height) + " mm), " + ShapeText(page);
}

std::string BoxText(const std::array<double, 4>& box) {
    std::string text;
    for (const double number : box) text += (text.empty() ? "" : ",") + NumberText(number);
    return text;
}

std::string BytesText(std::uint64_t count) {
    std::string digits = std::to_string(count);
    for (std::size_t at = digits.size(); at > 3; at -= 3) digits.insert(at - 3, ",");
    return digits + (count == 1 ? " byte" : " bytes");
}

}  // namespace devkit::inspect
