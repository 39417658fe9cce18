#include "devkit/msxml/com/childmethods.h"

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/tree/editing.h"

namespace devkit::msxml {

namespace {

// The child behind an interface pointer. Throws common::HresultError for what is no child.
NodeRef ChildOf(const Node& parent, IUnknown* pObject) {
    NodeRef pChild = NodeOf(pObject);
    if (!pChild || pChild->Parent() != &parent || pChild->Is(Kind::Attribute))
        throw common::HresultError(E_INVALIDARG);
    return pChild;
}

// The child that a VARIANT names; null for "behind the last".
NodeRef ReferenceChild(const Node& parent, const VARIANT& before) {
    if (before.vt == VT_NULL || before.vt == VT_EMPTY) return NodeRef();
    const bool isObject = before.vt == VT_UNKNOWN || before.vt == VT_DISPATCH;
    if (!isObject) throw common::HresultError(E_FAIL);
    return before.punkVal == nullptr ? NodeRef() : ChildOf(parent, before.punkVal);
}

NodeRef NewChild(IXMLDOMNode* pObject) {
    NodeRef pNode = NodeOf(pObject);
    if (!pNode) throw common::HresultError(E_INVALIDARG);
    return pNode;
}

}  // namespace

HRESULT InsertBefore(Node& parent, IXMLDOMNode* pNew, const VARIANT& before, IXMLDOMNode** ppNew) noexcept {
    const NodeRef keep(&parent);
    return AnswerIfWanted(ppNew, [&] {
        const NodeRef pBefore = ReferenceChild(parent, before);
        const NodeRef pNode = NewChild(pNew);
        InsertChild(parent, *pNode, pBefore.Get());
        return ReturnNode(pNode.Get(), ppNew);
    });
}

HRESULT AppendChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode** ppNew) noexcept {
    const NodeRef keep(&parent);
    return AnswerIfWanted(ppNew, [&] {
        const NodeRef pNode = NewChild(pNew);
        InsertChild(parent, *pNode, nullptr);
        return ReturnNode(pNode.Get(), ppNew);
    });
}

HRESULT RemoveChild(Node& parent, IXMLDOMNode* pChild, IXMLDOMNode** ppChild) noexcept {
    const NodeRef keep(&parent);
    return AnswerIfWanted(ppChild, [&] {
        const NodeRef pNode = ChildOf(parent, pChild);
        pNode->Detach();
        return ReturnNode(pNode.Get(), ppChild);
    });
}

HRESULT ReplaceChild(Node& parent, IXMLDOMNode* pNew, IXMLDOMNode* pOld, IXMLDOMNode** ppOld) noexcept {
    const NodeRef keep(&parent);
    return AnswerIfWanted(ppOld, [&] {
        const NodeRef pNode = NewChild(pNew);
        const NodeRef pReplaced = ChildOf(parent, pOld);
        ReplaceChild(parent, *pNode, *pReplaced);
        return ReturnNode(pReplaced.Get(), ppOld);
    });
}

}  // namespace devkit::msxml
