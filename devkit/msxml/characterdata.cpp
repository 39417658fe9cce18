#include "devkit/msxml/characterdata.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/tree.h"

namespace devkit::msxml {

namespace {

// Moves the text from the offset on into a new node of the same kind behind the node.
template <typename Kind>
HRESULT Split(Kind& node, long offset, IXMLDOMText** ppRight) noexcept {
    if (ppRight == nullptr) return E_INVALIDARG;
    *ppRight = nullptr;
    const std::wstring& data = node.Data();
    if (offset < 0 || static_cast<std::size_t>(offset) > data.size()) return E_INVALIDARG;
    return Guarded([&] {
        const platform::ComPtr<Kind> pRight(new Kind(node.OwnerDocument()));
        pRight->SetData(data.substr(static_cast<std::size_t>(offset)));
        node.SetData(data.substr(0, static_cast<std::size_t>(offset)));
        if (node.Parent() != nullptr) Tree::Attach(*node.Parent(), *pRight.Get(), node.Next());
        return Return(pRight.Get(), ppRight);
    });
}

}  // namespace

HRESULT Text::splitText(long offset, IXMLDOMText** ppRight) { return Split(*this, offset, ppRight); }

HRESULT CdataSection::splitText(long offset, IXMLDOMText** ppRight) { return Split(*this, offset, ppRight); }

}  // namespace devkit::msxml
