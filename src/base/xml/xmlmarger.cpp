#include "base/xml/xmlmarger.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

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

// The children of a base node before anything is appended to it, to be found by key where there are keys.
class XmlMarger::Level {
  public:
    Level(const XmlNodeComparator& comparator, IXMLDOMNode* pParent)
        : m_comparator(comparator), m_children(ChildrenOf(pParent)) {
        for (const ComPtr<IXMLDOMNode>& pChild : m_children) {
            if (!pChild) Throw<std::runtime_error>("Unexpected state.");
            const std::optional<std::wstring> key = comparator.KeyOf(pChild.Get());
            if (!key) return;
            m_byKey[*key].push_back(pChild.Get());
        }
    }

    // In the order of the children.
    [[nodiscard]] std::vector<IXMLDOMNode*> Matches(IXMLDOMNode* pNode) const {
        if (m_byKey.empty()) return CompareWithEach(pNode);
        const auto found = m_byKey.find(m_comparator.KeyOf(pNode).value());
        return found == m_byKey.end() ? std::vector<IXMLDOMNode*>() : found->second;
    }

    [[nodiscard]] bool IsEmpty() const noexcept { return m_children.empty(); }

  private:
    [[nodiscard]] std::vector<IXMLDOMNode*> CompareWithEach(IXMLDOMNode* pNode) const {
        std::vector<IXMLDOMNode*> matches;
        for (const ComPtr<IXMLDOMNode>& pChild : m_children) {
            if (m_comparator.IsSameNode(pChild.Get(), pNode)) matches.push_back(pChild.Get());
        }
        return matches;
    }

    const XmlNodeComparator& m_comparator;
    std::vector<ComPtr<IXMLDOMNode>> m_children;
    std::unordered_map<std::wstring, std::vector<IXMLDOMNode*>> m_byKey;
};

void XmlMarger::Merge(IXMLDOMDocument2* pBase, IXMLDOMDocument2* pTarget) {
    ThrowIfNull(pBase, "pBase is null.");
    ThrowIfNull(pTarget, "pTarget is null.");
    m_pBaseDocument = pBase;
    MergeNodes(pBase, pTarget);
}

void XmlMarger::MergeNodes(IXMLDOMNode* pBase, IXMLDOMNode* pTarget) {
    if (!HasChildNodes(pBase) || !HasChildNodes(pTarget)) return;
    const Level level(m_comparator, pBase);
    std::vector<ComPtr<IXMLDOMNode>> missing;
    for (const ComPtr<IXMLDOMNode>& pTargetChild : ChildrenOf(pTarget)) {
        if (!pTargetChild && !level.IsEmpty()) Throw<std::runtime_error>("Unexpected state.");
        if (MergeIntoMatches(level, pTargetChild.Get())) continue;
        // A document without a declaration does not lack it, and could not take it behind its root.
        if (IsXmlDeclaration(pTargetChild.Get())) continue;
        ThrowIfFailed(pTargetChild->cloneNode(VARIANT_TRUE, missing.emplace_back().Put()));
    }
    for (const ComPtr<IXMLDOMNode>& pClone : missing) {
        ComPtr<IXMLDOMNode> pAppended;
        ThrowIfFailed(pBase->appendChild(pClone.Get(), pAppended.Put()));
    }
}

bool XmlMarger::MergeIntoMatches(const Level& level, IXMLDOMNode* pTargetChild) {
    if (level.IsEmpty()) return false;
    const std::vector<IXMLDOMNode*> matches = level.Matches(pTargetChild);
    for (IXMLDOMNode* const pMatch : matches) {
        DeclareNamespaces(pMatch, pTargetChild);
        MergeNodes(pMatch, pTargetChild);
    }
    return !matches.empty();
}

void XmlMarger::DeclareNamespaces(IXMLDOMNode* pBase, IXMLDOMNode* pTarget) {
    NamespaceMap namespaces;
    AddDeclarations(pBase, namespaces);
    AddDeclarations(pTarget, namespaces);
    if (!namespaces.empty()) Declare(m_pBaseDocument, pBase, namespaces);
}

}  // namespace base::xml
