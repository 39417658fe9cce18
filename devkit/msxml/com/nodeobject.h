#pragma once

#include <type_traits>

#include "devkit/msxml/com/childmethods.h"
#include "devkit/msxml/com/dispatchobject.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/com/nodemethods.h"

namespace devkit::msxml {

// The COM side of a node: IXMLDOMNode for every kind, on top of which a kind adds its own methods. Bases are
// the interfaces between IXMLDOMNode and Interface. It stands in the node's own room, so references to it are
// the node's, and it is as good as nothing beside the node.
template <typename Interface, typename... Bases>
class NodeObject : public WithoutLateBinding<Interface> {
  public:
    NodeObject(const NodeObject&) = delete;
    NodeObject& operator=(const NodeObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        if (IsOneOf<IUnknown, IDispatch, IXMLDOMNode, Interface, Bases...>(iid)) {
            *ppObject = static_cast<IXMLDOMNode*>(this);
        } else if (iid == kIidOfNode) {
            *ppObject = &m_node;
        } else {
            return E_NOINTERFACE;
        }
        m_node.Keep();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return m_node.Keep(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_node.Drop(); }

    HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* p) override { return GetNodeName(m_node, p); }
    HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* p) override { return GetNodeValue(m_node, p); }
    HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT value) override { return PutNodeValue(m_node, value); }
    HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* p) override { return GetNodeType(m_node, p); }
    HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** pp) override { return GetParentNode(m_node, pp); }
    HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** pp) override {
        return GetChildNodes(m_node, pp);
    }
    HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** pp) override { return GetFirstChild(m_node, pp); }
    HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** pp) override { return GetLastChild(m_node, pp); }
    HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** pp) override {
        return GetPreviousSibling(m_node, pp);
    }
    HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** pp) override {
        return GetNextSibling(m_node, pp);
    }
    HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** pp) override {
        return GetAttributes(m_node, pp);
    }
    HRESULT STDMETHODCALLTYPE insertBefore(IXMLDOMNode* pNew, VARIANT before, IXMLDOMNode** pp) override {
        return InsertBefore(m_node, pNew, before, pp);
    }
    HRESULT STDMETHODCALLTYPE replaceChild(IXMLDOMNode* pNew, IXMLDOMNode* pOld, IXMLDOMNode** pp) override {
        return ReplaceChild(m_node, pNew, pOld, pp);
    }
    HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode* pChild, IXMLDOMNode** pp) override {
        return RemoveChild(m_node, pChild, pp);
    }
    HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode* pNew, IXMLDOMNode** pp) override {
        return AppendChild(m_node, pNew, pp);
    }
    HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* p) override { return HasChildNodes(m_node, p); }
    HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** pp) override {
        return GetOwnerDocument(m_node, pp);
    }
    HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** pp) override {
        return CloneNode(m_node, deep, pp);
    }
    HRESULT STDMETHODCALLTYPE get_nodeTypeString(BSTR* p) override { return GetNodeTypeString(m_node, p); }
    HRESULT STDMETHODCALLTYPE get_text(BSTR* p) override { return GetText(m_node, p); }
    HRESULT STDMETHODCALLTYPE put_text(BSTR text) override { return PutText(m_node, text); }
    HRESULT STDMETHODCALLTYPE get_specified(VARIANT_BOOL* p) override { return ReturnFlag(true, p); }
    HRESULT STDMETHODCALLTYPE get_definition(IXMLDOMNode** pp) override { return ReturnNoNode(pp); }
    HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* p) override { return GetNodeTypedValue(m_node, p); }
    HRESULT STDMETHODCALLTYPE put_nodeTypedValue(VARIANT value) override {
        return PutNodeTypedValue(m_node, value);
    }
    HRESULT STDMETHODCALLTYPE get_dataType(VARIANT* p) override { return ReturnNoText(p); }
    HRESULT STDMETHODCALLTYPE put_dataType(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_xml(BSTR* p) override { return GetXml(m_node, p); }
    HRESULT STDMETHODCALLTYPE transformNode(IXMLDOMNode*, BSTR* p) override {
        return ReturnNoText(p) == S_FALSE ? E_NOTIMPL : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE selectNodes(BSTR query, IXMLDOMNodeList** pp) override {
        return SelectNodes(m_node, query, pp);
    }
    HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR query, IXMLDOMNode** pp) override {
        return SelectSingleNode(m_node, query, pp);
    }
    HRESULT STDMETHODCALLTYPE get_parsed(VARIANT_BOOL* p) override { return ReturnFlag(true, p); }
    HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* p) override { return GetNamespaceUri(m_node, p); }
    HRESULT STDMETHODCALLTYPE get_prefix(BSTR* p) override { return GetPrefix(m_node, p); }
    HRESULT STDMETHODCALLTYPE get_baseName(BSTR* p) override { return GetBaseName(m_node, p); }
    HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode*, VARIANT) override { return E_NOTIMPL; }

  protected:
    explicit NodeObject(Node& node) noexcept : m_node(node) {}
    ~NodeObject() = default;

    [[nodiscard]] Node& TheNode() const noexcept { return m_node; }

  private:
    Node& m_node;
};

}  // namespace devkit::msxml
