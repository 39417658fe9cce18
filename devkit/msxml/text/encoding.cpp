#include "devkit/msxml/text/encoding.h"

#include <algorithm>
#include <array>

#include "devkit/msxml/text/parsefailure.h"
#include "devkit/msxml/tree/characters.h"
#include "devkit/msxml/tree/xmldeclaration.h"
#include "devkit/msxml/tree/xmlerror.h"
#include "platform/utf.h"

namespace devkit::msxml {

namespace {

enum class Encoding { Unknown, Utf8, Utf16, Utf16BigEndian };

struct NamedEncoding {
    std::wstring_view name;
    Encoding encoding;
};

constexpr std::array kEncodings = {
    NamedEncoding{L"utf-8", Encoding::Utf8},     NamedEncoding{L"utf-16", Encoding::Utf16},
    NamedEncoding{L"utf-16le", Encoding::Utf16}, NamedEncoding{L"utf-16be", Encoding::Utf16BigEndian},
    NamedEncoding{L"ucs-2", Encoding::Utf16},    NamedEncoding{L"iso-10646-ucs-2", Encoding::Utf16},
};

constexpr wchar_t LowerCase(wchar_t c) noexcept {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

Encoding EncodingOf(std::wstring_view name) noexcept {
    for (const NamedEncoding& known : kEncodings) {
        const bool isEqual = std::equal(name.begin(), name.end(), known.name.begin(), known.name.end(),
                                        [](wchar_t a, wchar_t b) { return LowerCase(a) == b; });
        if (isEqual) return known.encoding;
    }
    return Encoding::Unknown;
}

bool IsWide(Encoding encoding) noexcept {
    return encoding == Encoding::Utf16 || encoding == Encoding::Utf16BigEndian;
}

// The encoding that a declaration names; without one the other. A malformed declaration is the parser's to
// refuse.
Encoding DeclaredEncoding(std::wstring_view start, Encoding otherwise) {
    constexpr std::wstring_view kOpening = L"<?xml";
    const std::size_t end = start.find(L"?>");
    if (!start.starts_with(kOpening) || end == std::wstring_view::npos) return otherwise;
    std::wstring name;
    try {
        name = ParseXmlDeclaration(start.substr(kOpening.size(), end - kOpening.size())).encoding;
    } catch (const Refused&) {
        return otherwise;
    }
    if (name.empty()) return otherwise;
    const Encoding encoding = EncodingOf(name);
    if (encoding == Encoding::Unknown) {
        throw FailureAt(XmlInvalidEncoding, L"Only UTF-8 and UTF-16 are known, not " + name, {}, 0);
    }
    if (IsWide(encoding) != IsWide(otherwise)) {
        throw FailureAt(XmlInvalidSwitch, L"The text is not in the encoding that it declares", {}, 0);
    }
    return encoding;
}

// The start of 8-bit text, in which a declaration is ASCII.
std::wstring StartOf(std::string_view bytes) {
    constexpr std::size_t kLongestDeclaration = 1024;
    const std::string_view start = bytes.substr(0, kLongestDeclaration);
    std::wstring text(start.size(), L'\0');
    std::transform(start.begin(), start.end(), text.begin(),
                   [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
    return text;
}

std::string DecodeUtf16(std::string_view bytes, bool isBigEndian) {
    std::wstring text(bytes.size() / 2, L'\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(bytes[2 * i]);
        const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
        text[i] = static_cast<wchar_t>(isBigEndian ? first << 8 | second : second << 8 | first);
    }
    static_cast<void>(DeclaredEncoding(text, Encoding::Utf16));
    if (bytes.size() % 2 != 0) {
        throw FailureAt(XmlBadCharData, L"The text ends within a character", text, text.size());
    }
    return EncodeText(text);
}

std::string EncodeUtf16(std::wstring_view text, bool isBigEndian) {
    std::string bytes;
    bytes.reserve(2 * text.size() + 2);
    const auto append = [&](wchar_t c) {
        const char low = static_cast<char>(c & 0xFF);
        const char high = static_cast<char>(c >> 8 & 0xFF);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    };
    append(L'\xFEFF');
    for (const wchar_t c : text) append(c);
    return bytes;
}

}  // namespace

std::string DecodeBytes(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) return std::string(bytes.substr(3));
    if (bytes.starts_with("\xFF\xFE")) return DecodeUtf16(bytes.substr(2), false);
    if (bytes.starts_with("\xFE\xFF")) return DecodeUtf16(bytes.substr(2), true);
    if (bytes.starts_with(std::string_view("<\0", 2))) return DecodeUtf16(bytes, false);
    if (bytes.starts_with(std::string_view("\0<", 2))) return DecodeUtf16(bytes, true);
    static_cast<void>(DeclaredEncoding(StartOf(bytes), Encoding::Utf8));
    return std::string(bytes);
}

std::string EncodeText(std::wstring_view text) {
    const std::size_t forbidden = FindForbiddenCharacter(text);
    if (forbidden != std::wstring_view::npos) {
        throw FailureAt(XmlBadCharData, L"XML does not have the character", text, forbidden);
    }
    return platform::ToUtf8(text);
}

bool IsUtf16(std::wstring_view name) noexcept { return IsWide(EncodingOf(name)); }

std::string Encode(std::wstring_view text, std::wstring_view name) {
    switch (EncodingOf(name)) {
        case Encoding::Utf8:
            return platform::ToUtf8(text);
        case Encoding::Utf16:
            return EncodeUtf16(text, false);
        case Encoding::Utf16BigEndian:
            return EncodeUtf16(text, true);
        default:
            throw Refused{XmlInvalidEncoding};
    }
}

}  // namespace devkit::msxml
