#include "devkit/msxml/tree/name.h"

#include <algorithm>
#include <array>

#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Productions 4 and 4a of XML 1.0, fifth edition, without the colon.
constexpr std::array kStartRanges = {
    Range{U'A', U'Z'},     Range{U'_', U'_'},     Range{U'a', U'z'},       Range{0xC0, 0xD6},
    Range{0xD8, 0xF6},     Range{0xF8, 0x2FF},    Range{0x370, 0x37D},     Range{0x37F, 0x1FFF},
    Range{0x200C, 0x200D}, Range{0x2070, 0x218F}, Range{0x2C00, 0x2FEF},   Range{0x3001, 0xD7FF},
    Range{0xF900, 0xFDCF}, Range{0xFDF0, 0xFFFD}, Range{0x10000, 0xEFFFF},
};
constexpr std::array kFurtherRanges = {
    Range{U'-', U'.'}, Range{U'0', U'9'}, Range{0xB7, 0xB7}, Range{0x300, 0x36F}, Range{0x203F, 0x2040},
};

template <typename Ranges>
bool IsIn(const Ranges& ranges, char32_t c) noexcept {
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](const Range& range) { return c >= range.first && c <= range.last; });
}

bool IsStart(char32_t c) noexcept { return IsIn(kStartRanges, c); }
bool IsFurther(char32_t c) noexcept { return IsStart(c) || IsIn(kFurtherRanges, c); }

// Takes one character off the text. A surrogate that is not one of a pair stands for itself.
char32_t TakeCharacter(std::wstring_view& text) noexcept {
    const char32_t first = text.front();
    text.remove_prefix(1);
    if (first < 0xD800 || first >= 0xDC00 || text.empty()) return first;
    const char32_t second = text.front();
    if (second < 0xDC00 || second >= 0xE000) return first;
    text.remove_prefix(1);
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

void CheckPart(std::wstring_view part) {
    if (part.empty() || !IsStart(TakeCharacter(part))) throw Refused{XmlBadStartNameChar};
    while (!part.empty()) {
        if (!IsFurther(TakeCharacter(part))) throw Refused{XmlBadNameChar};
    }
}

std::wstring_view UriOf(std::wstring_view qualified, std::wstring_view uri) noexcept {
    if (qualified == L"xmlns" || qualified.starts_with(L"xmlns:")) return kXmlnsUri;
    return qualified.starts_with(L"xml:") ? kXmlUri : uri;
}

}  // namespace

Name::Name(std::wstring_view qualified, std::wstring_view uri, std::wstring_view prefix)
    : m_qualified(qualified),
      m_uri(uri),
      m_prefix(prefix),
      m_colon(qualified.find(L':')),
      m_declaration(qualified == L"xmlns" || qualified.starts_with(L"xmlns:")) {}

std::wstring_view Name::Prefix() const noexcept {
    return m_colon == std::wstring::npos ? std::wstring_view(m_prefix) : Qualified().substr(0, m_colon);
}

std::wstring_view Name::Local() const noexcept {
    return m_colon == std::wstring::npos ? Qualified() : Qualified().substr(m_colon + 1);
}

std::wstring_view Name::DeclaredPrefix() const noexcept {
    return m_declaration && m_colon != std::wstring::npos ? Local() : std::wstring_view();
}

void CheckQualifiedName(std::wstring_view qualified) {
    const std::size_t colon = qualified.find(L':');
    if (colon == std::wstring_view::npos) return CheckPart(qualified);
    if (qualified.find(L':', colon + 1) != std::wstring_view::npos) throw Refused{XmlMultipleColons};
    CheckPart(qualified.substr(0, colon));
    CheckPart(qualified.substr(colon + 1));
}

SharedName ValidName(std::wstring_view qualified, std::wstring_view uri) {
    if (qualified.empty()) throw Refused{XmlNotAllowed};
    CheckQualifiedName(qualified);
    const std::wstring_view bound = UriOf(qualified, uri);
    auto pName = std::make_shared<const Name>(qualified, bound);
    if (!pName->Prefix().empty() && bound.empty()) throw Refused{XmlPrefixUndeclared};
    return pName;
}

SharedName MadeDefaultDeclaration() { return std::make_shared<const Name>(L"xmlns", kXmlnsUri, L"xmlns"); }

SharedName ValidTarget(std::wstring_view name) {
    if (name.empty()) throw Refused{XmlNotAllowed};
    CheckPart(name);
    return std::make_shared<const Name>(name, std::wstring_view());
}

}  // namespace devkit::msxml
