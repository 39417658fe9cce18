#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace devkit::msxml {

inline constexpr std::wstring_view kXmlnsUri = L"http://www.w3.org/2000/xmlns/";
inline constexpr std::wstring_view kXmlUri = L"http://www.w3.org/XML/1998/namespace";

// The qualified name of a node with the namespace that it is bound to.
class Name {
  public:
    // The qualified name must be valid, see ValidName. The prefix counts for a name without a colon.
    Name(std::wstring_view qualified, std::wstring_view uri, std::wstring_view prefix = {});

    [[nodiscard]] std::wstring_view Qualified() const noexcept { return m_qualified; }
    [[nodiscard]] std::wstring_view Uri() const noexcept { return m_uri; }
    [[nodiscard]] std::wstring_view Prefix() const noexcept;
    [[nodiscard]] std::wstring_view Local() const noexcept;

    // Whether an attribute of this name declares a namespace: "xmlns" or "xmlns:p".
    [[nodiscard]] bool IsDeclaration() const noexcept { return m_declaration; }
    // The prefix that a declaration binds, empty for "xmlns".
    [[nodiscard]] std::wstring_view DeclaredPrefix() const noexcept;

  private:
    std::wstring m_qualified;
    std::wstring m_uri;
    std::wstring m_prefix;
    std::size_t m_colon;
    bool m_declaration;
};

// Shared by all nodes of a name that one load or one call makes.
using SharedName = std::shared_ptr<const Name>;

// The name for createElement, createAttribute and createNode. "xmlns", "xmlns:p" and "xml:p" get the
// namespace that is theirs whatever uri says. Refused with XmlNotAllowed for an empty name,
// XmlBadStartNameChar, XmlBadNameChar or XmlMultipleColons for an invalid one, XmlPrefixUndeclared for a
// prefix without a namespace.
[[nodiscard]] SharedName ValidName(std::wstring_view qualified, std::wstring_view uri);

// The name of an attribute "xmlns" that createNode makes: unlike that of a parsed one it has a prefix,
// "xmlns".
[[nodiscard]] SharedName MadeDefaultDeclaration();

// The name of a processing instruction or an entity: no namespace, and a colon has no meaning. Refused as
// by ValidName.
[[nodiscard]] SharedName ValidTarget(std::wstring_view name);

// Refused with XmlBadStartNameChar, XmlBadNameChar or XmlMultipleColons for what is no qualified
// name.
void CheckQualifiedName(std::wstring_view qualified);

}  // namespace devkit::msxml
