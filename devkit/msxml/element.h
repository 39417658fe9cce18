#pragma once

#include <utility>

#include "devkit/msxml/nodeobject.h"

namespace devkit::msxml {

class Element final : public NodeObject<IXMLDOMElement> {
  public:
    Element(Document& document, SharedName pName) noexcept
        : NodeObject(NODE_ELEMENT, document, std::move(pName)) {}

    [[nodiscard]] const NodeChain* Attributes() const noexcept override { return &m_attributes; }

    HRESULT STDMETHODCALLTYPE get_tagName(BSTR* pName) override { return GetNodeName(*this, pName); }
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

  private:
    NodeChain m_attributes;
};

}  // namespace devkit::msxml
