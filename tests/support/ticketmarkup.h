#pragma once

#include <string>
#include <string_view>

// Print schema documents and pieces of them, with the customary prefixes, as the program writes them and a
// DOM saves them. Names are given with their prefixes; an element without content is written in the short
// form.
namespace tests {

inline constexpr std::wstring_view kFrameworkUri =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
inline constexpr std::wstring_view kKeywordsUri =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";

// A document of the given kind; declarations are added to the root's.
[[nodiscard]] inline std::wstring SchemaDocument(std::wstring_view kind, std::wstring_view body,
                                                 std::wstring_view declarations = {}) {
    std::wstring text = L"<psf:";
    text.append(kind).append(L" xmlns:psf=\"").append(kFrameworkUri);
    text.append(L"\" xmlns:psk=\"").append(kKeywordsUri);
    text.append(L"\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"");
    text.append(L" xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"").append(declarations);
    text.append(L" version=\"1\"");
    if (body.empty()) return text.append(L"/>");
    return text.append(L">").append(body).append(L"</psf:").append(kind).append(L">");
}

[[nodiscard]] inline std::wstring Ticket(std::wstring_view body, std::wstring_view declarations = {}) {
    return SchemaDocument(L"PrintTicket", body, declarations);
}

[[nodiscard]] inline std::wstring Capabilities(std::wstring_view body) {
    return SchemaDocument(L"PrintCapabilities", body);
}

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

[[nodiscard]] inline std::wstring Property(std::wstring_view name, std::wstring_view content) {
    return Named(L"Property", name, content);
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

// The bytes of text that is plain ASCII.
[[nodiscard]] inline std::string Bytes(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t character : text) bytes += static_cast<char>(character);
    return bytes;
}

}  // namespace tests
