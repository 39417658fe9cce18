#include "base/xml/documentview.h"

#include <string_view>
#include <utility>

#include "base/logging/check.h"
#include "platform/bstr.h"
#include "platform/variant.h"

namespace base::xml {

using logging::ThrowIfFailed;
using platform::Bstr;
using platform::ComPtr;
using platform::Variant;

namespace {

// An item that the list does not yield is null.
[[nodiscard]] std::vector<NodeView> ChildrenOf(IXMLDOMNode* pNode) {
    ComPtr<IXMLDOMNodeList> pList;
    ThrowIfFailed(pNode->get_childNodes(pList.Put()));
    LONG length = 0;
    ThrowIfFailed(pList->get_length(&length));
    std::vector<NodeView> children;
    children.reserve(static_cast<std::size_t>(length));
    for (LONG index = 0; index < length; ++index) {
        ComPtr<IXMLDOMNode> pChild;
        ThrowIfFailed(pList->get_item(index, pChild.Put()));
        children.emplace_back(std::move(pChild));
    }
    return children;
}

void AddDeclaration(IXMLDOMNode* pAttribute, Declarations& declarations) {
    constexpr std::wstring_view kPrefix = L"xmlns:";
    Bstr name;
    ThrowIfFailed(pAttribute->get_nodeName(name.Put()));
    if (!name.View().starts_with(kPrefix)) return;
    Bstr uri;
    ThrowIfFailed(pAttribute->get_text(uri.Put()));
    declarations.insert_or_assign(std::wstring(name.View()), std::wstring(uri.View()));
}

// Whether all attributes could be had.
[[nodiscard]] bool ReadDeclarations(IXMLDOMNode* pNode, Declarations& declarations) {
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    const HRESULT found = pNode->get_attributes(pAttributes.Put());
    if (found != S_OK || !pAttributes) return SUCCEEDED(found);
    // A DOM may keep one map, with one position, for a node; a map that cannot be reset stands at its start.
    static_cast<void>(pAttributes->reset());
    for (;;) {
        ComPtr<IXMLDOMNode> pAttribute;
        const HRESULT walked = pAttributes->nextNode(pAttribute.Put());
        if (walked != S_OK || !pAttribute) return SUCCEEDED(walked);
        AddDeclaration(pAttribute.Get(), declarations);
    }
}

}  // namespace

bool NodeView::HasChildren() {
    if (!m_hasChildren) {
        VARIANT_BOOL hasChildren = VARIANT_FALSE;
        ThrowIfFailed(m_pNode->hasChildNodes(&hasChildren));
        m_hasChildren = hasChildren == VARIANT_TRUE;
    }
    return *m_hasChildren;
}

std::vector<NodeView>& NodeView::Children() {
    if (!m_children) m_children = ChildrenOf(m_pNode.Get());
    return *m_children;
}

const std::optional<std::wstring>& NodeView::KeyBy(const XmlNodeComparator& comparator) {
    if (!m_isKeyRead) {
        m_key = comparator.KeyOf(m_pNode.Get());
        m_isKeyRead = true;
    }
    return m_key;
}

const Declarations& NodeView::GetDeclarations() {
    if (!m_areDeclarationsRead) {
        m_declarations.clear();
        m_areDeclarationsRead = ReadDeclarations(m_pNode.Get(), m_declarations);
    }
    return m_declarations;
}

void NodeView::Declare(IXMLDOMDocument2* pDocument, const Declarations& declarations) {
    ComPtr<IXMLDOMNamedNodeMap> pAttributes;
    if (m_pNode->get_attributes(pAttributes.Put()) != S_OK || !pAttributes) return;
    for (const auto& [name, uri] : declarations) {
        ComPtr<IXMLDOMAttribute> pDeclaration;
        ThrowIfFailed(pDocument->createAttribute(Bstr(name).Get(), pDeclaration.Put()));
        ThrowIfFailed(pDeclaration->put_value(Variant(uri).Get()));
        ComPtr<IXMLDOMNode> pSet;
        if (SUCCEEDED(pAttributes->setNamedItem(pDeclaration.Get(), pSet.Put())))
            m_declarations.insert_or_assign(name, uri);
    }
}

NodeView NodeView::Clone() const {
    ComPtr<IXMLDOMNode> pClone;
    ThrowIfFailed(m_pNode->cloneNode(VARIANT_TRUE, pClone.Put()));
    NodeView clone(std::move(pClone));
    clone.m_isKeyRead = m_isKeyRead;
    clone.m_key = m_key;
    return clone;
}

void NodeView::Append(NodeView child) {
    ComPtr<IXMLDOMNode> pAppended;
    ThrowIfFailed(m_pNode->appendChild(child.Get(), pAppended.Put()));
    if (m_children) m_children->push_back(std::move(child));
    m_hasChildren.reset();
}

}  // namespace base::xml
