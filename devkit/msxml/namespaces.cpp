#include "devkit/msxml/namespaces.h"

#include "devkit/msxml/attributes.h"
#include "devkit/msxml/comerror.h"
#include "devkit/msxml/textcontent.h"

namespace devkit::msxml {

namespace {

void Require(bool agrees) {
    if (!agrees) throw ComError{E_INVALIDARG};
}

bool Agrees(const Name& name, std::wstring_view prefix, std::wstring_view uri) noexcept {
    return name.IsDeclaration() || name.Prefix() != prefix || name.Uri() == uri;
}

// A prefix is declared: the element's name and its attributes must not use it for something else.
void CheckDeclaration(const Node& element, const Name& declaration, std::wstring_view value) {
    const std::wstring_view prefix = declaration.DeclaredPrefix();
    if (value.empty()) return;
    const bool isFreeElement = prefix.empty() && element.GetName()->Uri().empty();
    Require(isFreeElement || Agrees(*element.GetName(), prefix, value));
    if (prefix.empty()) return;  // an attribute without a prefix is in no namespace
    for (const Node* pOther = element.Attributes()->pFirst; pOther != nullptr; pOther = pOther->Next()) {
        Require(Agrees(*pOther->GetName(), prefix, value));
    }
}

// A prefixed attribute comes: the element's name, its attributes and its declarations must not say otherwise.
void CheckUse(const Node& element, const Name& name) {
    const std::wstring_view prefix = name.Prefix();
    Require(Agrees(*element.GetName(), prefix, name.Uri()));
    for (const Node* pOther = element.Attributes()->pFirst; pOther != nullptr; pOther = pOther->Next()) {
        const Name& other = *pOther->GetName();
        Require(Agrees(other, prefix, name.Uri()));
        if (!other.IsDeclaration() || other.DeclaredPrefix() != prefix) continue;
        const std::wstring value = RawText(*pOther);
        Require(value.empty() || value == name.Uri());
    }
}

}  // namespace

void CheckPrefixes(const Node& element, const Node& attribute, std::wstring_view value) {
    const Name& name = *attribute.GetName();
    if (name.IsDeclaration()) return CheckDeclaration(element, name, value);
    if (!name.Prefix().empty()) CheckUse(element, name);
}

bool IsInForce(const Node& element, const Name& declaration, std::wstring_view value) noexcept {
    if (!value.empty()) return true;
    if (!declaration.DeclaredPrefix().empty()) return false;
    return !element.GetName()->Prefix().empty() || element.GetName()->Uri().empty();
}

std::optional<std::wstring> FindNamespace(const Node& node, std::wstring_view prefix) {
    if (prefix == L"xml") return std::wstring(xmlUri);
    if (prefix == L"xmlns") return std::wstring(xmlnsUri);
    const std::wstring declaration = prefix.empty() ? L"xmlns" : L"xmlns:" + std::wstring(prefix);
    for (const Node* pNode = &node; pNode != nullptr; pNode = pNode->Parent()) {
        if (pNode->Type() != NODE_ELEMENT) continue;
        if (const Node* pFound = FindAttribute(*pNode->Attributes(), declaration)) {
            std::wstring value = RawText(*pFound);
            if (IsInForce(*pNode, *pFound->GetName(), value)) return value;
        }
        if (pNode->GetName()->Prefix() == prefix) return std::wstring(pNode->GetName()->Uri());
    }
    if (prefix.empty()) return std::wstring();
    return std::nullopt;
}

}  // namespace devkit::msxml
