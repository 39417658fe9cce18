#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// Pieces of tickets with the customary prefixes, as the program writes them.
namespace tests {

[[nodiscard]] inline std::wstring Named(std::wstring_view element, std::wstring_view name,
                                        std::wstring_view content) {
    std::wstring text = L"<psf:";
    text.append(element).append(L" name=\"").append(name).append(L"\"");
    if (content.empty()) return text.append(L"/>");
    return text.append(L">").append(content).append(L"</psf:").append(element).append(L">");
}

[[nodiscard]] inline std::wstring Value(std::wstring_view type, std::wstring_view text) {
    std::wstring value = L"<psf:Value xsi:type=\"xsd:";
    return value.append(type).append(L"\">").append(text).append(L"</psf:Value>");
}

[[nodiscard]] inline std::wstring Integer(int value) { return Value(L"integer", std::to_wstring(value)); }

[[nodiscard]] inline std::wstring Feature(std::wstring_view name, std::wstring_view option,
                                          std::wstring_view optionContent = {}) {
    return Named(L"Feature", name, Named(L"Option", option, optionContent));
}

[[nodiscard]] inline std::wstring ScoredProperty(std::wstring_view name, std::wstring_view content) {
    return Named(L"ScoredProperty", name, content);
}

[[nodiscard]] inline std::wstring ParameterRef(std::wstring_view name) {
    return Named(L"ParameterRef", name, {});
}

[[nodiscard]] inline std::wstring ParameterInit(std::wstring_view name, int value) {
    return Named(L"ParameterInit", name, Integer(value));
}

}  // namespace tests
