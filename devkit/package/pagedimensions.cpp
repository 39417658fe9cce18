#include "devkit/package/pagedimensions.h"

#include <charconv>
#include <string>

#include "devkit/common/error.h"
#include "devkit/package/xpsvocabulary.h"

namespace devkit::package {

namespace {

// Reads one number and the separator behind it from the start of the text.
std::optional<double> TakeNumber(std::string_view& text) {
    constexpr std::string_view kSeparators = ", \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(kSeparators), text.size()));
    double number = 0;
    const auto [pEnd, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(pEnd - text.data()));
    if (!text.empty() && kSeparators.find(text[0]) == std::string_view::npos) return std::nullopt;
    return number;
}

std::optional<double> Number(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    std::string_view rest = *text;
    const std::optional<double> number = TakeNumber(rest);
    return rest.find_first_not_of(" \t\r\n") == std::string_view::npos ? number : std::nullopt;
}

std::optional<std::array<double, 4>> Box(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    std::string_view rest = *text;
    std::array<double, 4> box{};
    for (double& value : box) {
        const std::optional<double> number = TakeNumber(rest);
        if (!number) return std::nullopt;
        value = *number;
    }
    return box;
}

}  // namespace

std::optional<PageDimensions> ReadPageDimensions(std::string_view markup, const common::XmlLimits& limits) {
    try {
        common::XmlReader reader(markup, "FixedPage", limits);
        return reader.NextElement() ? ReadPageDimensions(reader) : std::nullopt;
    } catch (const common::Error&) {
        return std::nullopt;
    }
}

std::optional<PageDimensions> ReadPageDimensions(const common::XmlReader& reader) {
    const bool isPage =
        reader.LocalName() == "FixedPage" && IsEither(reader.Namespace(), &Vocabulary::markupNamespace);
    if (!isPage) return std::nullopt;
    const std::optional<double> width = Number(reader.Attribute("Width"));
    const std::optional<double> height = Number(reader.Attribute("Height"));
    if (!width || !height) return std::nullopt;
    return PageDimensions{*width, *height, Box(reader.Attribute("BleedBox")),
                          Box(reader.Attribute("ContentBox"))};
}

}  // namespace devkit::package
