#include "base/xml/xmlmarger.h"

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/logging/check.h"
#include "platform/bstr.h"
#include "platform/variant.h"

namespace base::xml {

using logging::Throw;
using logging::ThrowIfFailed;
using logging::ThrowIfNull;
using platform::Bstr;
using platform::ComPtr;
using platform::Variant;

namespace {

// Attribute name to URI, in the order of the names.
using NamespaceMap = std::map<std::wstring, std::wstring>;

constexpr std::wstring_view DeclarationPrefix = L"xmlns:";

[[nodiscard]] bool HasChildNodes(IXMLDOMNode* pNode) {
    VARIANT_BOOL hasChildren = VARIANT_FALSE;
    ThrowIfFailed(pNode->hasChildNodes(&hasChildren));
    return hasChildren == VARIANT_TRUE;
}

// The children as they are now; what is appended later is not among them. An item that the list does not
// yield is null.
[[nodiscard]] std::vector<ComPtr<IXMLDOMNode>> ChildrenOf(IXMLDOMNode* pNode) {
    ComPtr<IXMLDOMNodeList> pList;
    ThrowIfFailed(pNode->get_childNodes(pList.Put()));
    LONG length = 0;
    ThrowIfFailed(pList->get_length(&length));
    std::vector<ComPtr<IXMLDOMNode>> children(static_cast<std::size_t>(length));
    for (LONG index = 0; index < length; ++index) {
        ThrowIfFailed(pList->get_item(index, children[static_cast<std::size_t>(index)].Put()));
    }
    return children;
}

// Adds the prefix declarations of a node; a node without attributes has none. What the map already holds for
// a prefix is replaced.
void AddDeclarations(IXMLDOMNode* pNode, NamespaceMap& namespaces) {
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    if (pNode->get_attributes(pAttributes.Put()) != S_OK || !pAttributes) return;
    // A DOM may keep one map, with one position, for a node; a map that cannot be reset stands at its start.
    static_cast<void>(pAttributes->reset());
    ComPtr<IXMLDOMNode> pAttribute;
    while (pAttributes->nextNode(pAttribute.Put()) == S_OK && pAttribute) {
        Bstr name;
        ThrowIfFailed(pAttribute->get_nodeName(name.Put()));
        if (!name.View().starts_with(DeclarationPrefix)) continue;
        Bstr uri;
        ThrowIfFailed(pAttribute->get_text(uri.Put()));
        namespaces.insert_or_assign(std::wstring(name.View()), std::wstring(uri.View()));
    }
}

void Declare(IXMLDOMDocument2* pDocument, IXMLDOMNode* pElement, const NamespaceMap& namespaces) {
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    if (pElement->get_attributes(pAttributes.Put()) != S_OK || !pAttributes) return;
    for (const auto& [name, uri] : namespaces) {
        ComPtr<IXMLDOMAttribute> pDeclaration;
        ThrowIfFailed(pDocument->createAttribute(Bstr(name).Get(), pDeclaration.Put()));
        ThrowIfFailed(pDeclaration->put_value(Variant(uri).Get()));
        // A DOM may refuse to set a declaration that is in force already; nothing is lost then.
        ComPtr<IXMLDOMNode> pSet;
        static_cast<void>(pAttributes->setNamedItem(pDeclaration.Get(), pSet.Put()));
    }
}

[[nodiscard]] bool IsXmlDeclaration(IXMLDOMNode* pNode) {
    DOMNodeType type = NODE_INVALID;
    ThrowIfFailed(pNode->get_nodeType(&type));
    if (type != NODE_PROCESSING_INSTRUCTION) return false;
    Bstr name;
    ThrowIfFailed(pNode->get_nodeName(name.Put()));
    return name.View() == L"xml";
}

}  // namespace

void XmlMarger::Merge(IXMLDOMDocument2* pBase, IXMLDOMDocument2* pTarget) {
    ThrowIfNull(pBase, "pBase is null.");
    ThrowIfNull(pTarget, "pTarget is null.");
    m_pBaseDocument = pBase;
    MergeNodes(pBase, pTarget);
}

void XmlMarger::MergeNodes(IXMLDOMNode* pBase, IXMLDOMNode* pTarget) {
    if (!HasChildNodes(pBase) || !HasChildNodes(pTarget)) return;
    const std::vector<ComPtr<IXMLDOMNode>> baseChildren = ChildrenOf(pBase);
    std::vector<ComPtr<IXMLDOMNode>> missing;
    for (const ComPtr<IXMLDOMNode>& pTargetChild : ChildrenOf(pTarget)) {
        if (MergeIntoMatches(baseChildren, pTargetChild.Get())) continue;
        // A document without a declaration does not lack it, and could not take it behind its root.
        if (IsXmlDeclaration(pTargetChild.Get())) continue;
        ThrowIfFailed(pTargetChild->cloneNode(VARIANT_TRUE, missing.emplace_back().Put()));
    }
    for (const ComPtr<IXMLDOMNode>& pClone : missing) {
        ComPtr<IXMLDOMNode> pAppended;
        ThrowIfFailed(pBase->appendChild(pClone.Get(), pAppended.Put()));
    }
}

bool XmlMarger::MergeIntoMatches(const std::vector<ComPtr<IXMLDOMNode>>& baseChildren,
                                 IXMLDOMNode* pTargetChild) {
    bool matched = false;
    for (const ComPtr<IXMLDOMNode>& pBaseChild : baseChildren) {
        if (!pBaseChild || pTargetChild == nullptr) Throw<std::runtime_error>("Unexpected state.");
        if (!m_comparator.IsSameNode(pBaseChild.Get(), pTargetChild)) continue;
        DeclareNamespaces(pBaseChild.Get(), pTargetChild);
        MergeNodes(pBaseChild.Get(), pTargetChild);
        matched = true;
    }
    return matched;
}

void XmlMarger::DeclareNamespaces(IXMLDOMNode* pBase, IXMLDOMNode* pTarget) {
    NamespaceMap namespaces;
    AddDeclarations(pBase, namespaces);
    AddDeclarations(pTarget, namespaces);
    if (!namespaces.empty()) Declare(m_pBaseDocument, pBase, namespaces);
}

}  // namespace base::xml
