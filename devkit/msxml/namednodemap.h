#pragma once

#include "devkit/msxml/chaincursor.h"
#include "devkit/msxml/comobject.h"

namespace devkit::msxml {

// The attributes of an element, namespace declarations included, in document order. It is live.
class NamedNodeMap final : public ComObject<IXMLDOMNamedNodeMap> {
  public:
    // The owner must have attributes.
    explicit NamedNodeMap(Node& owner) noexcept : m_cursor(owner, *owner.Attributes()) {}

    HRESULT STDMETHODCALLTYPE getNamedItem(BSTR name, IXMLDOMNode** ppNode) override;
    // Takes the place of the attribute of the same name; gives out the new attribute.
    HRESULT STDMETHODCALLTYPE setNamedItem(IXMLDOMNode* pNew, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE removeNamedItem(BSTR name, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_item(long index, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override;
    HRESULT STDMETHODCALLTYPE getQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE removeQualifiedItem(BSTR baseName, BSTR uri, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE reset() override;
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** ppEnumerator) override;

  private:
    [[nodiscard]] HRESULT Remove(Node* pAttribute, IXMLDOMNode** ppNode) noexcept;

    ChainCursor m_cursor;
};

}  // namespace devkit::msxml
