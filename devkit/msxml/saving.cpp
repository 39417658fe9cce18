#include "devkit/msxml/saving.h"

#include <algorithm>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/encodings.h"
#include "devkit/msxml/files.h"
#include "devkit/msxml/loading.h"
#include "devkit/msxml/serialiser.h"
#include "devkit/msxml/variants.h"
#include "devkit/msxml/xmldeclaration.h"
#include "platform/bstr.h"

namespace devkit::msxml {

namespace {

HRESULT SaveInto(const Document& document, IXMLDOMDocument& target) {
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    const platform::Bstr text(Serialise(document, DeclaredEncoding::Dropped));
    const HRESULT result = target.loadXML(text.Get(), &isLoaded);
    return result == S_OK ? S_OK : FAILED(result) ? result : E_FAIL;
}

HRESULT SaveThrough(const Document& document, IPersistStream& target) {
    platform::ComPtr<IStream> pStream;
    ThrowIfFailed(CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    WriteWhole(*pStream.Get(), SavedBytes(document));
    ThrowIfFailed(pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
    return target.Load(pStream.Get());
}

HRESULT SaveTo(const Document& document, IUnknown* pTarget) {
    const platform::ComPtr<IUnknown> target(pTarget);
    if (!target) return E_INVALIDARG;
    const NodeRef pNode = NodeOf(pTarget);
    if (pNode && pNode->Type() == NODE_DOCUMENT) {
        return LoadBytes(pNode->OwnerDocument(), SavedBytes(document), {});
    }
    platform::ComPtr<IStream> pStream;
    if (SUCCEEDED(target.QueryTo(pStream))) {
        WriteWhole(*pStream.Get(), SavedBytes(document));
        return S_OK;
    }
    platform::ComPtr<IXMLDOMDocument> pForeign;
    if (SUCCEEDED(target.QueryTo(pForeign))) return SaveInto(document, *pForeign.Get());
    platform::ComPtr<IPersistStream> pPersistent;
    if (SUCCEEDED(target.QueryTo(pPersistent))) return SaveThrough(document, *pPersistent.Get());
    return E_INVALIDARG;
}

}  // namespace

HRESULT Save(const Document& document, const VARIANT& destination) noexcept {
    return Guarded([&] {
        platform::Variant direct;
        CopyDirect(destination, direct);
        if (direct.Unknown() != nullptr) return SaveTo(document, direct.Unknown());
        if (direct.Text() == nullptr) return E_INVALIDARG;
        return WriteLocalFile(std::wstring(View(direct.Text())), SavedBytes(document));
    });
}

std::string SavedBytes(const Document& document) {
    const Node* const pDeclaration = document.Declaration();
    const std::wstring text = Serialise(document, DeclaredEncoding::Kept);
    if (text.empty()) return {};
    std::wstring encoding;
    if (pDeclaration != nullptr) encoding = ParseXmlDeclaration(pDeclaration->Data()).encoding;
    return Encode(text, encoding.empty() ? L"utf-8" : encoding);
}

void WriteWhole(ISequentialStream& stream, std::string_view bytes) {
    constexpr std::size_t longestWrite = 1 << 30;
    while (!bytes.empty()) {
        ULONG written = 0;
        const auto wanted = static_cast<ULONG>(std::min(bytes.size(), longestWrite));
        ThrowIfFailed(stream.Write(bytes.data(), wanted, &written));
        if (written == 0) throw ComError{STG_E_MEDIUMFULL};
        if (written > wanted) throw ComError{E_UNEXPECTED};
        bytes.remove_prefix(written);
    }
}

}  // namespace devkit::msxml
