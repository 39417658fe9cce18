#pragma once

#include "devkit/msxml/dispatch.h"
#include "devkit/msxml/node.h"
#include "devkit/msxml/nodeediting.h"
#include "devkit/msxml/nodelinks.h"
#include "devkit/msxml/nodeproperties.h"
#include "devkit/msxml/nodequeries.h"

namespace devkit::msxml {

// The COM side of a node: IXMLDOMNode for every kind, on top of which a kind adds its own methods. Bases are
// the interfaces between IXMLDOMNode and Interface.
template <typename Interface, typename... Bases>
class NodeObject : public Dispatch<Interface>, public Node {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        if (IsOneOf<IUnknown, IDispatch, IXMLDOMNode, Interface, Bases...>(iid)) {
            *ppObject = static_cast<IXMLDOMNode*>(this);
        } else if (iid == IID_Node) {
            *ppObject = static_cast<Node*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return Node::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return Node::Release(); }
    [[nodiscard]] IXMLDOMNode* AsDomNode() noexcept override { return this; }

    HRESULT STDMETHODCALLTYPE get_nodeName(BSTR* p) override { return GetNodeName(*this, p); }
    HRESULT STDMETHODCALLTYPE get_nodeValue(VARIANT* p) override { return GetNodeValue(*this, p); }
    HRESULT STDMETHODCALLTYPE put_nodeValue(VARIANT value) override { return PutNodeValue(*this, value); }
    HRESULT STDMETHODCALLTYPE get_nodeType(DOMNodeType* p) override { return GetNodeType(*this, p); }
    HRESULT STDMETHODCALLTYPE get_parentNode(IXMLDOMNode** pp) override { return GetParentNode(*this, pp); }
    HRESULT STDMETHODCALLTYPE get_childNodes(IXMLDOMNodeList** pp) override {
        return GetChildNodes(*this, pp);
    }
    HRESULT STDMETHODCALLTYPE get_firstChild(IXMLDOMNode** pp) override {
        return Return(Children().pFirst, pp);
    }
    HRESULT STDMETHODCALLTYPE get_lastChild(IXMLDOMNode** pp) override {
        return Return(Children().pLast, pp);
    }
    HRESULT STDMETHODCALLTYPE get_previousSibling(IXMLDOMNode** pp) override {
        return GetPreviousSibling(*this, pp);
    }
    HRESULT STDMETHODCALLTYPE get_nextSibling(IXMLDOMNode** pp) override { return GetNextSibling(*this, pp); }
    HRESULT STDMETHODCALLTYPE get_attributes(IXMLDOMNamedNodeMap** pp) override {
        return GetAttributes(*this, pp);
    }
    HRESULT STDMETHODCALLTYPE insertBefore(IXMLDOMNode* pNew, VARIANT before, IXMLDOMNode** pp) override {
        return InsertBefore(*this, pNew, before, pp);
    }
    HRESULT STDMETHODCALLTYPE replaceChild(IXMLDOMNode* pNew, IXMLDOMNode* pOld, IXMLDOMNode** pp) override {
        return ReplaceChild(*this, pNew, pOld, pp);
    }
    HRESULT STDMETHODCALLTYPE removeChild(IXMLDOMNode* pChild, IXMLDOMNode** pp) override {
        return RemoveChild(*this, pChild, pp);
    }
    HRESULT STDMETHODCALLTYPE appendChild(IXMLDOMNode* pNew, IXMLDOMNode** pp) override {
        return AppendChild(*this, pNew, pp);
    }
    HRESULT STDMETHODCALLTYPE hasChildNodes(VARIANT_BOOL* p) override { return HasChildNodes(*this, p); }
    HRESULT STDMETHODCALLTYPE get_ownerDocument(IXMLDOMDocument** pp) override {
        return GetOwnerDocument(*this, pp);
    }
    HRESULT STDMETHODCALLTYPE cloneNode(VARIANT_BOOL deep, IXMLDOMNode** pp) override {
        return CloneNode(*this, deep, pp);
    }
    HRESULT STDMETHODCALLTYPE get_nodeTypeString(BSTR* p) override { return GetNodeTypeString(*this, p); }
    HRESULT STDMETHODCALLTYPE get_text(BSTR* p) override { return GetText(*this, p); }
    HRESULT STDMETHODCALLTYPE put_text(BSTR text) override { return PutText(*this, text); }
    HRESULT STDMETHODCALLTYPE get_specified(VARIANT_BOOL* p) override { return ReturnTrue(p); }
    HRESULT STDMETHODCALLTYPE get_definition(IXMLDOMNode** pp) override { return ReturnNoNode(pp); }
    HRESULT STDMETHODCALLTYPE get_nodeTypedValue(VARIANT* p) override { return GetNodeTypedValue(*this, p); }
    HRESULT STDMETHODCALLTYPE put_nodeTypedValue(VARIANT value) override {
        return PutNodeTypedValue(*this, value);
    }
    HRESULT STDMETHODCALLTYPE get_dataType(VARIANT* p) override { return ReturnNoText(p); }
    HRESULT STDMETHODCALLTYPE put_dataType(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_xml(BSTR* p) override { return GetXml(*this, p); }
    HRESULT STDMETHODCALLTYPE transformNode(IXMLDOMNode*, BSTR* p) override {
        return ReturnNoText(p) == S_FALSE ? E_NOTIMPL : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE selectNodes(BSTR query, IXMLDOMNodeList** pp) override {
        return SelectNodes(*this, query, pp);
    }
    HRESULT STDMETHODCALLTYPE selectSingleNode(BSTR query, IXMLDOMNode** pp) override {
        return SelectSingleNode(*this, query, pp);
    }
    HRESULT STDMETHODCALLTYPE get_parsed(VARIANT_BOOL* p) override { return ReturnTrue(p); }
    HRESULT STDMETHODCALLTYPE get_namespaceURI(BSTR* p) override { return GetNamespaceUri(*this, p); }
    HRESULT STDMETHODCALLTYPE get_prefix(BSTR* p) override { return GetPrefix(*this, p); }
    HRESULT STDMETHODCALLTYPE get_baseName(BSTR* p) override { return GetBaseName(*this, p); }
    HRESULT STDMETHODCALLTYPE transformNodeToObject(IXMLDOMNode*, VARIANT) override { return E_NOTIMPL; }

  protected:
    using Node::Node;
};

}  // namespace devkit::msxml
