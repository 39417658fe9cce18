#include "devkit/msxml/encodings.h"

#include <algorithm>
#include <array>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/unicode.h"

namespace devkit::msxml {

namespace {

struct Encoding {
    std::wstring_view name;
    UINT codePage;
};

constexpr std::array encodings = {
    Encoding{L"utf-8", CP_UTF8},
    Encoding{L"utf-16", codePageUtf16},
    Encoding{L"utf-16le", codePageUtf16},
    Encoding{L"utf-16be", codePageUtf16BigEndian},
    Encoding{L"ucs-2", codePageUtf16},
    Encoding{L"iso-10646-ucs-2", codePageUtf16},
    Encoding{L"us-ascii", 20127},
    Encoding{L"iso-8859-1", 28591},
    Encoding{L"iso-8859-2", 28592},
    Encoding{L"iso-8859-3", 28593},
    Encoding{L"iso-8859-4", 28594},
    Encoding{L"iso-8859-5", 28595},
    Encoding{L"iso-8859-6", 28596},
    Encoding{L"iso-8859-7", 28597},
    Encoding{L"iso-8859-8", 28598},
    Encoding{L"iso-8859-9", 28599},
    Encoding{L"iso-8859-15", 28605},
    Encoding{L"windows-1250", 1250},
    Encoding{L"windows-1251", 1251},
    Encoding{L"windows-1252", 1252},
    Encoding{L"windows-1253", 1253},
    Encoding{L"windows-1254", 1254},
    Encoding{L"windows-1255", 1255},
    Encoding{L"windows-1256", 1256},
    Encoding{L"windows-1257", 1257},
    Encoding{L"windows-1258", 1258},
    Encoding{L"windows-874", 874},
    Encoding{L"koi8-r", 20866},
    Encoding{L"shift_jis", 932},
    Encoding{L"euc-jp", 51932},
    Encoding{L"gb2312", 936},
    Encoding{L"gbk", 936},
    Encoding{L"gb18030", 54936},
    Encoding{L"big5", 950},
    Encoding{L"euc-kr", 949},
    Encoding{L"ks_c_5601-1987", 949},
};

constexpr wchar_t LowerCase(wchar_t c) noexcept {
    return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c;
}

bool EqualsName(std::wstring_view name, std::wstring_view lowerCase) noexcept {
    return std::equal(name.begin(), name.end(), lowerCase.begin(), lowerCase.end(),
                      [](wchar_t a, wchar_t b) { return LowerCase(a) == b; });
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

std::string EncodeCodePage(std::wstring_view text, UINT codePage) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(codePage, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    // Reading it back finds what the encoding lacks, replacements and look-alikes included, for every code
    // page.
    std::wstring back(text.size(), L'\0');
    const int count = MultiByteToWideChar(codePage, 0, bytes.data(), size, back.data(), length);
    if (count != length || back != text) throw ComError{Hresult(XmlInvalidEncoding)};
    return bytes;
}

}  // namespace

UINT FindCodePage(std::wstring_view name) noexcept {
    const auto* const pEncoding =
        std::find_if(encodings.begin(), encodings.end(),
                     [name](const Encoding& encoding) { return EqualsName(name, encoding.name); });
    if (pEncoding == encodings.end()) return 0;
    const UINT codePage = pEncoding->codePage;
    const bool isBuiltIn =
        codePage == codePageUtf16 || codePage == codePageUtf16BigEndian || codePage == CP_UTF8;
    return isBuiltIn || IsValidCodePage(codePage) ? codePage : 0;
}

std::string Encode(std::wstring_view text, std::wstring_view name) {
    const UINT codePage = FindCodePage(name);
    switch (codePage) {
        case 0:
            throw ComError{Hresult(XmlInvalidEncoding)};
        case CP_UTF8:
            return Utf8FromWide(text);
        case codePageUtf16:
        case codePageUtf16BigEndian:
            return EncodeUtf16(text, codePage == codePageUtf16BigEndian);
        default:
            return text.empty() ? std::string() : EncodeCodePage(text, codePage);
    }
}

}  // namespace devkit::msxml
