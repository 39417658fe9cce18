#include "devkit/msxml/decoder.h"

#include <algorithm>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/encodings.h"
#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/unicode.h"
#include "devkit/msxml/xmldeclaration.h"

namespace devkit::msxml {

namespace {

[[noreturn]] void Fail(XmlError code) { throw FailureAt(Hresult(code), {}, {}, 0); }

// The encoding that a declaration names; empty without one. A malformed declaration is the parser's to
// refuse.
std::wstring DeclaredEncoding(std::wstring_view start) {
    constexpr std::wstring_view opening = L"<?xml";
    const std::size_t end = start.find(L"?>");
    if (!start.starts_with(opening) || end == std::wstring_view::npos) return {};
    try {
        return ParseXmlDeclaration(start.substr(opening.size(), end - opening.size())).encoding;
    } catch (const ComError&) {
        return {};
    }
}

// The start of 8-bit text, in which a declaration is ASCII.
std::wstring StartOf(std::string_view bytes) {
    constexpr std::size_t longestDeclaration = 1024;
    const std::string_view start = bytes.substr(0, longestDeclaration);
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
    const std::wstring encoding = DeclaredEncoding(text);
    const UINT codePage = encoding.empty() ? codePageUtf16 : FindCodePage(encoding);
    if (codePage == 0) Fail(XmlInvalidEncoding);
    if (codePage != codePageUtf16 && codePage != codePageUtf16BigEndian) Fail(XmlInvalidSwitch);
    if (bytes.size() % 2 != 0) throw FailureAt(Hresult(XmlBadCharData), {}, text, text.size());
    return EncodeText(text);
}

std::string DecodeCodePage(std::string_view bytes, UINT codePage) {
    if (bytes.size() > 0x7FFFFFFF) throw std::bad_alloc();
    const int length = static_cast<int>(bytes.size());
    const int count = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), length, nullptr, 0);
    if (count == 0) Fail(XmlBadCharData);
    std::wstring text(static_cast<std::size_t>(count), L'\0');
    MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), length, text.data(), count);
    return EncodeText(text);
}

}  // namespace

std::string DecodeBytes(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) return std::string(bytes.substr(3));
    if (bytes.starts_with("\xFF\xFE")) return DecodeUtf16(bytes.substr(2), false);
    if (bytes.starts_with("\xFE\xFF")) return DecodeUtf16(bytes.substr(2), true);
    if (bytes.starts_with(std::string_view("<\0", 2))) return DecodeUtf16(bytes, false);
    if (bytes.starts_with(std::string_view("\0<", 2))) return DecodeUtf16(bytes, true);

    const std::wstring encoding = DeclaredEncoding(StartOf(bytes));
    const UINT codePage = encoding.empty() ? static_cast<UINT>(CP_UTF8) : FindCodePage(encoding);
    if (codePage == 0) Fail(XmlInvalidEncoding);
    if (codePage == codePageUtf16 || codePage == codePageUtf16BigEndian) Fail(XmlInvalidSwitch);
    return codePage == CP_UTF8 ? std::string(bytes) : DecodeCodePage(bytes, codePage);
}

std::string EncodeText(std::wstring_view text) {
    const std::size_t forbidden = FindForbiddenCharacter(text);
    if (forbidden != std::wstring_view::npos) throw FailureAt(Hresult(XmlBadCharData), {}, text, forbidden);
    return Utf8FromWide(text);
}

ParseFailure FailureAt(HRESULT code, const std::wstring& detail, std::wstring_view text,
                       std::size_t position) {
    ParseFailure failure;
    failure.code = code;
    failure.reason = ReasonFor(code, detail);
    position = std::min(position, text.size());
    const std::size_t lineBreak = position == 0 ? std::wstring_view::npos : text.rfind(L'\n', position - 1);
    const std::size_t start = lineBreak == std::wstring_view::npos ? 0 : lineBreak + 1;
    const std::size_t end = std::min(text.find_first_of(L"\r\n", start), text.size());
    failure.sourceText = text.substr(start, end > start ? end - start : 0);
    failure.line =
        1 + static_cast<long>(std::count(text.begin(), text.begin() + static_cast<long long>(start), L'\n'));
    failure.linePosition = static_cast<long>(position - start) + 1;
    failure.filePosition = static_cast<long>(position);
    return failure;
}

}  // namespace devkit::msxml
