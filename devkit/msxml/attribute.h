#pragma once

#include <utility>

#include "devkit/msxml/nodeobject.h"

namespace devkit::msxml {

// An attribute, namespace declarations included. Its value is its text nodes.
class Attribute final : public NodeObject<IXMLDOMAttribute> {
  public:
    Attribute(Document& document, SharedName pName) noexcept
        : NodeObject(NODE_ATTRIBUTE, document, std::move(pName)) {}

    HRESULT STDMETHODCALLTYPE get_name(BSTR* pName) override { return GetNodeName(*this, pName); }
    HRESULT STDMETHODCALLTYPE get_value(VARIANT* pValue) override { return GetNodeValue(*this, pValue); }
    HRESULT STDMETHODCALLTYPE put_value(VARIANT value) override { return PutNodeValue(*this, value); }
};

}  // namespace devkit::msxml
