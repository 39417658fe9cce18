#pragma once

#include "devkit/msxml/chaincursor.h"
#include "devkit/msxml/comobject.h"

namespace devkit::msxml {

// The list that childNodes gives. It is live: it shows the children as they are at each call.
class ChildList final : public ComObject<IXMLDOMNodeList> {
  public:
    explicit ChildList(Node& parent) noexcept : m_cursor(parent, parent.Children()) {}

    HRESULT STDMETHODCALLTYPE get_item(long index, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override;
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE reset() override;
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** ppEnumerator) override;

  private:
    ChainCursor m_cursor;
};

}  // namespace devkit::msxml
