#include "devkit/msxml/com/loading.h"

#include <array>
#include <utility>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/com/values.h"
#include "devkit/msxml/text/encoding.h"
#include "devkit/msxml/text/serialiser.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/utf.h"
#include "platform/variant.h"

namespace devkit::msxml {

namespace {

void Empty(DomState& document) noexcept {
    document.DetachChildren();
    document.failure = {};
}

// Replaces the content by what the text in UTF-8 says; the decoding is part of what can fail.
template <typename Decode>
HRESULT Replace(DomState& document, Decode&& decode) {
    Empty(document);
    try {
        ParseInto(document, document.settings.rules, decode());
        return S_OK;
    } catch (ParseFailure& failure) {
        document.DetachChildren();
        document.failure = std::move(failure);
        return static_cast<HRESULT>(document.failure.code);
    } catch (...) {
        document.DetachChildren();
        throw;
    }
}

// Notes a failure that happened before there was any text.
HRESULT Refuse(DomState& document, HRESULT code) {
    Empty(document);
    document.failure.code = static_cast<std::uint32_t>(code);
    document.failure.reason = L"The source of the document could not be read";
    return code;
}

HRESULT LoadArray(DomState& document, SAFEARRAY* pArray) {
    if (pArray == nullptr || SafeArrayGetDim(pArray) != 1) throw common::HresultError(E_INVALIDARG);
    long first = 0;
    long last = 0;
    common::ThrowIfFailed(SafeArrayGetLBound(pArray, 1, &first));
    common::ThrowIfFailed(SafeArrayGetUBound(pArray, 1, &last));
    void* pData = nullptr;
    common::ThrowIfFailed(SafeArrayAccessData(pArray, &pData));
    std::string bytes(static_cast<const char*>(pData), static_cast<std::size_t>(last - first + 1));
    SafeArrayUnaccessData(pArray);
    return LoadBytes(document, bytes);
}

HRESULT LoadObject(DomState& document, IUnknown* pSource) {
    const platform::ComPtr<IUnknown> source(pSource);
    if (!source) throw common::HresultError(E_INVALIDARG);
    const NodeRef pNode = NodeOf(pSource);
    if (pNode && pNode->Is(Kind::Document)) return LoadBytes(document, SavedBytes(pNode->OwnerDocument()));
    platform::ComPtr<IStream> pStream;
    if (SUCCEEDED(source.QueryTo(pStream))) return LoadBytes(document, ReadToEnd(*pStream.Get()));
    platform::ComPtr<ISequentialStream> pSequence;
    if (SUCCEEDED(source.QueryTo(pSequence))) return LoadBytes(document, ReadToEnd(*pSequence.Get()));
    platform::ComPtr<IXMLDOMDocument> pForeign;
    if (FAILED(source.QueryTo(pForeign))) throw common::HresultError(E_INVALIDARG);
    platform::Bstr text;
    common::ThrowIfFailed(pForeign->get_xml(text.Put()));
    return Replace(document, [&] { return EncodeText(text.View()); });
}

// Whether a VARIANT's text, or where that should be, is null. Copying it would make it empty.
bool IsNullText(const VARIANT& source) noexcept {
    switch (source.vt) {
        case VT_BSTR:
            return source.bstrVal == nullptr;
        case VT_BSTR | VT_BYREF:
            return source.pbstrVal == nullptr || *source.pbstrVal == nullptr;
        case VT_VARIANT | VT_BYREF:
            return source.pvarVal != nullptr && IsNullText(*source.pvarVal);
        default:
            return false;
    }
}

HRESULT LoadVariant(DomState& document, const VARIANT& source) {
    if (IsNullText(source)) throw common::HresultError(E_INVALIDARG);
    platform::Variant direct;
    CopyDirect(source, direct);
    if (direct.Text() != nullptr) throw common::HresultError(E_NOTIMPL);
    if (direct.Type() == (VT_ARRAY | VT_UI1)) return LoadArray(document, direct.Get().parray);
    return LoadObject(document, direct.Unknown());
}

HRESULT Report(HRESULT loaded, VARIANT_BOOL* pSuccess) noexcept {
    if (pSuccess != nullptr && SUCCEEDED(loaded)) *pSuccess = VARIANT_TRUE;
    return SUCCEEDED(loaded) ? S_OK : S_FALSE;
}

}  // namespace

HRESULT Load(DomState& document, const VARIANT& source, VARIANT_BOOL* pSuccess) noexcept {
    if (pSuccess != nullptr) *pSuccess = VARIANT_FALSE;
    const NodeRef keep(&document);
    return Guarded([&] {
        try {
            return Report(LoadVariant(document, source), pSuccess);
        } catch (const common::HresultError& error) {
            return Refuse(document, error.GetHresult());
        } catch (const Refused& refusal) {  // by a document that cannot be saved
            return Refuse(document, Hresult(refusal.code));
        }
    });
}

HRESULT LoadText(DomState& document, std::wstring_view text, VARIANT_BOOL* pSuccess) noexcept {
    if (pSuccess != nullptr) *pSuccess = VARIANT_FALSE;
    const NodeRef keep(&document);
    return Guarded([&] { return Report(Replace(document, [&] { return EncodeText(text); }), pSuccess); });
}

HRESULT LoadBytes(DomState& document, std::string_view bytes) {
    return Replace(document, [&] { return DecodeBytes(bytes); });
}

std::string ReadToEnd(ISequentialStream& stream) {
    std::string bytes;
    std::array<char, 8192> block;
    for (;;) {
        ULONG count = 0;
        common::ThrowIfFailed(stream.Read(block.data(), static_cast<ULONG>(block.size()), &count));
        if (count == 0) return bytes;
        if (count > block.size()) throw common::HresultError(E_UNEXPECTED);
        bytes.append(block.data(), count);
    }
}

}  // namespace devkit::msxml
