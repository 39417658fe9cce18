#include "devkit/msxml/com/lists.h"

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/com/values.h"
#include "devkit/msxml/tree/attributes.h"
#include "devkit/msxml/tree/data.h"

namespace devkit::msxml {

namespace {

HRESULT NotEnumerable(IUnknown** ppEnumerator) noexcept {
    return Answer(ppEnumerator, [] { return E_NOTIMPL; });
}

HRESULT RemoveAndReturn(Node* pAttribute, IXMLDOMNode** ppNode) {
    const NodeRef pRemoved(pAttribute);
    if (!pRemoved) return S_FALSE;
    RemoveAttribute(*pRemoved);
    return ReturnNode(pRemoved.Get(), ppNode);
}

}  // namespace

// Puts the remembered place to whichever of the first node, the last and the old place is nearest to the
// index.
void ChainCursor::Start(unsigned index) noexcept {
    const unsigned last = m_chain.count - 1;
    const unsigned distance = index < last - index ? index : last - index;
    if (m_pRemembered != nullptr && m_rememberedVersion == m_chain.version) {
        const unsigned fromOld =
            index > m_rememberedIndex ? index - m_rememberedIndex : m_rememberedIndex - index;
        if (fromOld <= distance) return;
    }
    const bool fromFirst = index == distance;
    m_pRemembered = fromFirst ? m_chain.pFirst : m_chain.pLast;
    m_rememberedIndex = fromFirst ? 0 : last;
    m_rememberedVersion = m_chain.version;
}

Node* ChainCursor::At(long index) noexcept {
    if (index < 0 || index >= Count()) return nullptr;
    const auto wanted = static_cast<unsigned>(index);
    Start(wanted);
    for (; m_rememberedIndex < wanted; ++m_rememberedIndex) m_pRemembered = m_pRemembered->Next();
    for (; m_rememberedIndex > wanted; --m_rememberedIndex) m_pRemembered = m_pRemembered->Previous();
    return m_pRemembered;
}

Node* ChainCursor::Next() noexcept {
    Node* pNext = nullptr;
    if (m_state == State::BeforeFirst) {
        pNext = m_chain.pFirst;
    } else if (m_state == State::AtNode && m_pCurrent->Parent() == m_pOwner.Get()) {
        pNext = m_pCurrent->Next();
    }
    m_state = pNext != nullptr ? State::AtNode : State::AtEnd;
    m_pCurrent = NodeRef(pNext);
    return pNext;
}

void ChainCursor::Reset() noexcept {
    m_state = State::BeforeFirst;
    m_pCurrent = NodeRef();
}

HRESULT ChildList::get_item(long index, IXMLDOMNode** ppNode) {
    return Answer(ppNode, [&] {
        ExposeValue(m_cursor.Owner());
        return ReturnNode(m_cursor.At(index), ppNode);
    });
}

HRESULT ChildList::get_length(long* pLength) {
    return Guarded([&] {
        ExposeValue(m_cursor.Owner());
        return ReturnNumber(m_cursor.Count(), pLength);
    });
}

HRESULT ChildList::nextNode(IXMLDOMNode** ppNode) {
    return Answer(ppNode, [&] {
        ExposeValue(m_cursor.Owner());
        return ReturnNode(m_cursor.Next(), ppNode);
    });
}

HRESULT ChildList::reset() {
    m_cursor.Reset();
    return S_OK;
}

HRESULT ChildList::get__newEnum(IUnknown** ppEnumerator) { return NotEnumerable(ppEnumerator); }

HRESULT SelectedList::get_item(long index, IXMLDOMNode** ppNode) {
    return Answer(ppNode, [&] {
        if (index < 0 || static_cast<std::size_t>(index) >= m_nodes.size()) return S_FALSE;
        m_next = static_cast<std::size_t>(index) + 1;
        return ReturnNode(m_nodes[m_next - 1].Get(), ppNode);
    });
}

HRESULT SelectedList::get_length(long* pLength) {
    return ReturnNumber(static_cast<long>(m_nodes.size()), pLength);
}

HRESULT SelectedList::nextNode(IXMLDOMNode** ppNode) {
    return Answer(ppNode, [&] {
        return m_next < m_nodes.size() ? ReturnNode(m_nodes[m_next++].Get(), ppNode) : S_FALSE;
    });
}

HRESULT SelectedList::reset() {
    m_next = 0;
    return S_OK;
}

HRESULT SelectedList::get__newEnum(IUnknown** ppEnumerator) { return NotEnumerable(ppEnumerator); }

Node* NamedNodeMap::Find(BSTR name) const noexcept {
    return FindAttribute(m_cursor.Owner(), ViewToNull(name));
}

Node* NamedNodeMap::Find(BSTR baseName, BSTR uri) const noexcept {
    return FindAttribute(m_cursor.Owner(), ViewToNull(baseName), ViewToNull(uri));
}

HRESULT NamedNodeMap::getNamedItem(BSTR name, IXMLDOMNode** ppNode) {
    return Answer(ppNode, [&] { return name == nullptr ? E_INVALIDARG : ReturnNode(Find(name), ppNode); });
}

HRESULT NamedNodeMap::setNamedItem(IXMLDOMNode* pNew, IXMLDOMNode** ppNode) {
    return AnswerIfWanted(ppNode, [&] {
        if (pNew == nullptr) return E_INVALIDARG;
        const NodeRef pAttribute = NodeOf(pNew);
        if (!pAttribute || !pAttribute->Is(Kind::Attribute)) return E_FAIL;
        PutAttribute(m_cursor.Owner(), *pAttribute);
        return ReturnNode(pAttribute.Get(), ppNode);
    });
}

HRESULT NamedNodeMap::removeNamedItem(BSTR name, IXMLDOMNode** ppNode) {
    return AnswerIfWanted(
        ppNode, [&] { return name == nullptr ? E_INVALIDARG : RemoveAndReturn(Find(name), ppNode); });
}

HRESULT NamedNodeMap::get_item(long index, IXMLDOMNode** ppNode) {
    return Answer(ppNode, [&] { return ReturnNode(m_cursor.At(index), ppNode); });
}

HRESULT NamedNodeMap::get_length(long* pLength) { return ReturnNumber(m_cursor.Count(), pLength); }

HRESULT NamedNodeMap::getQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) {
    return Answer(
        ppNode, [&] { return baseName == nullptr ? E_INVALIDARG : ReturnNode(Find(baseName, uri), ppNode); });
}

HRESULT NamedNodeMap::removeQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) {
    return AnswerIfWanted(ppNode, [&] {
        return baseName == nullptr ? E_INVALIDARG : RemoveAndReturn(Find(baseName, uri), ppNode);
    });
}

HRESULT NamedNodeMap::nextNode(IXMLDOMNode** ppNode) {
    return Answer(ppNode, [&] { return ReturnNode(m_cursor.Next(), ppNode); });
}

HRESULT NamedNodeMap::reset() {
    m_cursor.Reset();
    return S_OK;
}

HRESULT NamedNodeMap::get__newEnum(IUnknown** ppEnumerator) { return NotEnumerable(ppEnumerator); }

}  // namespace devkit::msxml
