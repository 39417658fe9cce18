#pragma once

#include <vector>

#include "devkit/msxml/comobject.h"
#include "devkit/msxml/node.h"

namespace devkit::msxml {

// A list of nodes that were found once: what selectNodes and getElementsByTagName give. It keeps the nodes
// and does not follow later changes of the tree.
class SelectedList final : public ComObject<IXMLDOMNodeList> {
  public:
    explicit SelectedList(std::vector<NodeRef> nodes) noexcept : m_nodes(std::move(nodes)) {}

    HRESULT STDMETHODCALLTYPE get_item(long index, IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override;
    HRESULT STDMETHODCALLTYPE nextNode(IXMLDOMNode** ppNode) override;
    HRESULT STDMETHODCALLTYPE reset() override;
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown** ppEnumerator) override;

  private:
    [[nodiscard]] Node* At(std::size_t index) const noexcept;

    std::vector<NodeRef> m_nodes;
    std::size_t m_next = 0;
};

// The elements below a node whose qualified name it is ("*": all), in document order. E_INVALIDARG for a null
// out-parameter.
[[nodiscard]] HRESULT GetElementsByTagName(const Node& node, BSTR name, IXMLDOMNodeList** ppList) noexcept;

}  // namespace devkit::msxml
