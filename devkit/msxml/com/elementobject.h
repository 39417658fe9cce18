#pragma once

#include "devkit/msxml/com/nodeobject.h"

namespace devkit::msxml {

class ElementObject final : public NodeObject<IXMLDOMElement> {
  public:
    explicit ElementObject(Node& node) noexcept : NodeObject(node) {}

    HRESULT STDMETHODCALLTYPE get_tagName(BSTR* pName) override { return GetNodeName(TheNode(), pName); }
    // E_FAIL for what can be no attribute's name.
    HRESULT STDMETHODCALLTYPE getAttribute(BSTR name, VARIANT* pValue) override;
    // A prefix of a new attribute must be known at the element: XmlPrefixUndeclared.
    HRESULT STDMETHODCALLTYPE setAttribute(BSTR name, VARIANT value) override;
    HRESULT STDMETHODCALLTYPE removeAttribute(BSTR name) override;
    HRESULT STDMETHODCALLTYPE getAttributeNode(BSTR name, IXMLDOMAttribute** ppAttribute) override;
    HRESULT STDMETHODCALLTYPE setAttributeNode(IXMLDOMAttribute* pAttribute,
                                               IXMLDOMAttribute** ppOld) override;
    HRESULT STDMETHODCALLTYPE removeAttributeNode(IXMLDOMAttribute* pAttribute,
                                                  IXMLDOMAttribute** ppOld) override;
    HRESULT STDMETHODCALLTYPE getElementsByTagName(BSTR name, IXMLDOMNodeList** ppList) override;
    HRESULT STDMETHODCALLTYPE normalize() override;
};

}  // namespace devkit::msxml
