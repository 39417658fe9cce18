#pragma once

#include <string>
#include <string_view>

namespace tests {

inline constexpr std::wstring_view FrameworkUri =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemaframework";
inline constexpr std::wstring_view KeywordsUri =
    L"http://schemas.microsoft.com/windows/2003/08/printing/printschemakeywords";

// A print schema document of the given kind with the customary prefixes; declarations are added to the
// root's.
[[nodiscard]] inline std::wstring SchemaDocument(std::wstring_view kind, std::wstring_view body,
                                                 std::wstring_view declarations = {}) {
    std::wstring text = L"<psf:";
    text.append(kind).append(L" xmlns:psf=\"").append(FrameworkUri);
    text.append(L"\" xmlns:psk=\"").append(KeywordsUri);
    text.append(L"\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"");
    text.append(L" xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\"").append(declarations);
    text.append(L" version=\"1\"");
    // As a DOM writes an element without content.
    if (body.empty()) return text.append(L"/>");
    return text.append(L">").append(body).append(L"</psf:").append(kind).append(L">");
}

[[nodiscard]] inline std::wstring Ticket(std::wstring_view body, std::wstring_view declarations = {}) {
    return SchemaDocument(L"PrintTicket", body, declarations);
}

[[nodiscard]] inline std::wstring Capabilities(std::wstring_view body) {
    return SchemaDocument(L"PrintCapabilities", body);
}

// The bytes of text that is plain ASCII.
[[nodiscard]] inline std::string Bytes(std::wstring_view text) {
    std::string bytes;
    for (const wchar_t character : text) bytes += static_cast<char>(character);
    return bytes;
}

}  // namespace tests
