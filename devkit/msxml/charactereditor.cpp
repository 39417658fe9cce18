#include "devkit/msxml/charactereditor.h"

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"

namespace devkit::msxml {

namespace {

bool IsRange(const Node& node, long offset, long count) noexcept {
    return offset >= 0 && count >= 0 && static_cast<std::size_t>(offset) <= node.Data().size();
}

}  // namespace

HRESULT GetDataLength(const Node& node, long* pLength) noexcept {
    if (pLength == nullptr) return E_INVALIDARG;
    *pLength = static_cast<long>(node.Data().size());
    return S_OK;
}

HRESULT SubstringData(const Node& node, long offset, long count, BSTR* pData) noexcept {
    if (pData == nullptr) return E_INVALIDARG;
    *pData = nullptr;
    if (offset < 0 || count < 0) return E_INVALIDARG;
    const std::wstring_view data = node.Data();
    if (static_cast<std::size_t>(offset) > data.size()) return S_FALSE;
    const std::wstring_view part =
        data.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(count));
    return part.empty() ? ReturnNoText(pData) : ReturnText(part, pData);
}

HRESULT ReplaceData(Node& node, long offset, long count, BSTR data) noexcept {
    if (!IsRange(node, offset, count)) return E_INVALIDARG;
    return Guarded([&] {
        std::wstring text = node.Data();
        text.replace(static_cast<std::size_t>(offset), static_cast<std::size_t>(count), View(data));
        node.SetData(std::move(text));
        return S_OK;
    });
}

}  // namespace devkit::msxml
