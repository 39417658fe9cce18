#include "devkit/msxml/tree/attributes.h"

#include <utility>

#include "devkit/common/text.h"
#include "devkit/msxml/tree/data.h"
#include "devkit/msxml/tree/xmldeclaration.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

namespace {

void RequireAgreement(bool agrees) {
    if (!agrees) throw Refused{XmlPrefixConflict};
}

bool Agrees(const Name& name, std::wstring_view prefix, std::wstring_view uri) noexcept {
    return name.IsDeclaration() || name.Prefix() != prefix || name.Uri() == uri;
}

// A prefix is declared: the element's name and its attributes must not use it for something else.
void CheckDeclaration(const Node& element, const Name& declaration, std::wstring_view value) {
    const std::wstring_view prefix = declaration.DeclaredPrefix();
    if (value.empty()) return;
    const bool isFreeElement = prefix.empty() && element.GetName()->Uri().empty();
    RequireAgreement(isFreeElement || Agrees(*element.GetName(), prefix, value));
    if (prefix.empty()) return;  // an attribute without a prefix is in no namespace
    for (const Node* pOther = element.Attributes().pFirst; pOther != nullptr; pOther = pOther->Next()) {
        RequireAgreement(Agrees(*pOther->GetName(), prefix, value));
    }
}

// A prefixed attribute comes: the element's name, its attributes and its declarations must not say otherwise.
void CheckUse(const Node& element, const Name& name) {
    const std::wstring_view prefix = name.Prefix();
    RequireAgreement(Agrees(*element.GetName(), prefix, name.Uri()));
    std::wstring room;
    for (const Node* pOther = element.Attributes().pFirst; pOther != nullptr; pOther = pOther->Next()) {
        const Name& other = *pOther->GetName();
        RequireAgreement(Agrees(other, prefix, name.Uri()));
        if (!other.IsDeclaration() || other.DeclaredPrefix() != prefix) continue;
        const std::wstring_view value = RawText(*pOther, room);
        RequireAgreement(value.empty() || value == name.Uri());
    }
}

void CheckValue(const Node& owner, const Node& attribute, std::wstring_view value) {
    const Name& name = *attribute.GetName();
    if (!owner.Is(Kind::Element)) return CheckDeclarationItem(name.Qualified(), value);
    if (name.IsDeclaration()) return CheckDeclaration(owner, name, value);
    if (!name.Prefix().empty()) CheckUse(owner, name);
}

// Brings the data of an XML declaration to what its attributes say. For other owners nothing.
void FollowAttributes(Node& owner) {
    if (owner.Is(Kind::Element)) return;
    XmlDeclaration declaration;
    for (const auto& [name, pItem] : kDeclarationItems) {
        const Node* const pAttribute = FindAttribute(owner, name);
        if (pAttribute != nullptr) declaration.*pItem = RawText(*pAttribute);
    }
    owner.SetData(Format(declaration));
}

}  // namespace

Node* FindAttribute(const Node& owner, std::wstring_view qualified) noexcept {
    for (Node* pNode = owner.Attributes().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        if (pNode->GetName()->Qualified() == qualified) return pNode;
    }
    return nullptr;
}

Node* FindAttribute(const Node& owner, std::wstring_view local, std::wstring_view uri) noexcept {
    for (Node* pNode = owner.Attributes().pFirst; pNode != nullptr; pNode = pNode->Next()) {
        if (pNode->GetName()->Local() == local && pNode->GetName()->Uri() == uri) return pNode;
    }
    return nullptr;
}

void SetAttributeValue(Node& attribute, std::wstring value) {
    Node* const pOwner = attribute.Parent();
    if (pOwner != nullptr) CheckValue(*pOwner, attribute, value);
    SetTextContent(attribute, std::move(value));
    if (pOwner != nullptr) FollowAttributes(*pOwner);
}

NodeRef PutAttribute(Node& owner, Node& attribute) {
    if (attribute.Parent() != nullptr || !owner.HasAttributes()) throw Refused{XmlNotAllowed};
    CheckValue(owner, attribute, RawText(attribute));
    const Name& name = *attribute.GetName();
    Node* pOld = FindAttribute(owner, name.Qualified());
    if (pOld == nullptr && !name.Uri().empty()) pOld = FindAttribute(owner, name.Local(), name.Uri());
    NodeRef pReplaced(pOld);
    Node* const pNext = pOld == nullptr ? nullptr : pOld->Next();
    if (pOld != nullptr) pOld->Detach();
    owner.Attach(attribute, pNext);
    FollowAttributes(owner);
    return pReplaced;
}

void RemoveAttribute(Node& attribute) {
    const NodeRef pOwner(attribute.Parent());
    attribute.Detach();
    FollowAttributes(*pOwner);
}

NodeRef MakeDeclaration(Document& document, std::wstring_view data) {
    const XmlDeclaration declaration = ParseXmlDeclaration(data);
    NodeRef pNode = MakeNode(Kind::Instruction, document, ValidTarget(L"xml"), Format(declaration));
    for (const auto& [name, pItem] : kDeclarationItems) {
        const std::wstring& value = declaration.*pItem;
        if (value.empty()) continue;
        const NodeRef pAttribute = MakeNode(Kind::Attribute, document,
                                            std::make_shared<const Name>(name, std::wstring_view()), value);
        pNode->Attach(*pAttribute, nullptr);
    }
    return pNode;
}

bool IsInForce(const Node& element, const Name& declaration, std::wstring_view value) noexcept {
    if (!value.empty()) return true;
    if (!declaration.DeclaredPrefix().empty()) return false;
    return !element.GetName()->Prefix().empty() || element.GetName()->Uri().empty();
}

std::optional<std::wstring> FindNamespace(const Node& node, std::wstring_view prefix) {
    if (prefix == L"xml") return std::wstring(kXmlUri);
    if (prefix == L"xmlns") return std::wstring(kXmlnsUri);
    const std::wstring declaration = prefix.empty() ? L"xmlns" : L"xmlns:" + std::wstring(prefix);
    for (const Node* pNode = &node; pNode != nullptr; pNode = pNode->Parent()) {
        if (!pNode->Is(Kind::Element)) continue;
        if (const Node* pFound = FindAttribute(*pNode, declaration)) {
            std::wstring value = RawText(*pFound);
            if (IsInForce(*pNode, *pFound->GetName(), value)) return value;
        }
        if (pNode->GetName()->Prefix() == prefix) return std::wstring(pNode->GetName()->Uri());
    }
    if (prefix.empty()) return std::wstring();
    return std::nullopt;
}

bool PreservesWhiteSpace(const Node& node) {
    for (const Node* pNode = &node; pNode != nullptr; pNode = pNode->Parent()) {
        const Node* const pSpace = FindAttribute(*pNode, L"xml:space");
        if (pSpace == nullptr) continue;
        if (RawText(*pSpace) == L"preserve") return true;
        break;
    }
    return node.OwnerDocument().preservesWhiteSpace;
}

std::wstring TextContent(const Node& node) {
    std::wstring text = RawText(node);
    const bool isContainer = node.Is(Kind::Element) || node.Is(Kind::Document) || node.Is(Kind::Fragment);
    return isContainer && !PreservesWhiteSpace(node) ? std::wstring(common::Trimmed(text)) : text;
}

}  // namespace devkit::msxml
