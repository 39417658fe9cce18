#include "devkit/msxml/loading.h"

#include <array>

#include "devkit/msxml/comerror.h"
#include "devkit/msxml/comtext.h"
#include "devkit/msxml/decoder.h"
#include "devkit/msxml/document.h"
#include "devkit/msxml/files.h"
#include "devkit/msxml/parser.h"
#include "devkit/msxml/saving.h"
#include "devkit/msxml/tree.h"
#include "devkit/msxml/unicode.h"
#include "devkit/msxml/variants.h"
#include "platform/bstr.h"

namespace devkit::msxml {

namespace {

// Replaces the content by what the text in UTF-8 says; the decoding is part of what can fail.
template <typename Decode>
HRESULT Replace(Document& document, const std::wstring& url, Decode&& decode) {
    Empty(document);
    document.SetUrl(url);
    try {
        ParseInto(document, decode());
        return S_OK;
    } catch (ParseFailure& failure) {
        Tree::DetachChildren(document);
        const HRESULT code = failure.code;
        failure.url = url;
        document.SetFailure(std::move(failure));
        return code;
    } catch (...) {
        Tree::DetachChildren(document);
        throw;
    }
}

// Notes a failure that happened before there was any text.
HRESULT Refuse(Document& document, HRESULT code, const std::wstring& url) {
    Empty(document);
    ParseFailure failure;
    failure.code = code;
    failure.reason = ReasonFor(code, {});
    failure.url = url;
    document.SetFailure(std::move(failure));
    return code;
}

HRESULT LoadFile(Document& document, const std::wstring& path) {
    std::string bytes;
    const HRESULT result = ReadLocalFile(path, bytes);
    return FAILED(result) ? Refuse(document, result, path) : LoadBytes(document, bytes, path);
}

HRESULT LoadArray(Document& document, SAFEARRAY* pArray) {
    if (pArray == nullptr || SafeArrayGetDim(pArray) != 1) throw ComError{E_INVALIDARG};
    long first = 0;
    long last = 0;
    ThrowIfFailed(SafeArrayGetLBound(pArray, 1, &first));
    ThrowIfFailed(SafeArrayGetUBound(pArray, 1, &last));
    void* pData = nullptr;
    ThrowIfFailed(SafeArrayAccessData(pArray, &pData));
    std::string bytes(static_cast<const char*>(pData), static_cast<std::size_t>(last - first + 1));
    SafeArrayUnaccessData(pArray);
    return LoadBytes(document, bytes, {});
}

// The text of a DOM document of another library.
HRESULT LoadForeign(Document& document, IXMLDOMDocument& source) {
    platform::Bstr text;
    ThrowIfFailed(source.get_xml(text.Put()));
    return Replace(document, {}, [&] { return Utf8FromWide(text.View()); });
}

// What an object that can only save itself would save.
HRESULT LoadPersistent(Document& document, IPersistStream& source) {
    platform::ComPtr<IStream> pStream;
    ThrowIfFailed(CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    ThrowIfFailed(source.Save(pStream.Get(), FALSE));
    ThrowIfFailed(pStream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr));
    return LoadBytes(document, ReadToEnd(*pStream.Get()), {});
}

HRESULT LoadObject(Document& document, IUnknown* pSource) {
    const platform::ComPtr<IUnknown> source(pSource);
    if (!source) throw ComError{E_INVALIDARG};
    const NodeRef pNode = NodeOf(pSource);
    if (pNode && pNode->Type() == NODE_DOCUMENT) {
        return LoadBytes(document, SavedBytes(pNode->OwnerDocument()), {});
    }
    platform::ComPtr<IStream> pStream;
    if (SUCCEEDED(source.QueryTo(pStream))) return LoadBytes(document, ReadToEnd(*pStream.Get()), {});
    platform::ComPtr<ISequentialStream> pSequence;
    if (SUCCEEDED(source.QueryTo(pSequence))) return LoadBytes(document, ReadToEnd(*pSequence.Get()), {});
    platform::ComPtr<IXMLDOMDocument> pForeign;
    if (SUCCEEDED(source.QueryTo(pForeign))) return LoadForeign(document, *pForeign.Get());
    platform::ComPtr<IPersistStream> pPersistent;
    if (SUCCEEDED(source.QueryTo(pPersistent))) return LoadPersistent(document, *pPersistent.Get());
    throw ComError{E_INVALIDARG};
}

HRESULT LoadVariant(Document& document, const VARIANT& source) {
    platform::Variant direct;
    CopyDirect(source, direct);
    switch (direct.Type()) {
        case VT_BSTR:
            if (direct.Text() == nullptr) break;
            return LoadFile(document, std::wstring(View(direct.Text())));
        case VT_ARRAY | VT_UI1:
            return LoadArray(document, direct.Get().parray);
        case VT_UNKNOWN:
        case VT_DISPATCH:
            return LoadObject(document, direct.Unknown());
        default:
            break;
    }
    throw ComError{E_INVALIDARG};
}

HRESULT Report(HRESULT loaded, VARIANT_BOOL* pSuccess) noexcept {
    if (pSuccess != nullptr && SUCCEEDED(loaded)) *pSuccess = VARIANT_TRUE;
    return SUCCEEDED(loaded) ? S_OK : S_FALSE;
}

}  // namespace

HRESULT Load(Document& document, const VARIANT& source, VARIANT_BOOL* pSuccess) noexcept {
    if (pSuccess != nullptr) *pSuccess = VARIANT_FALSE;
    const NodeRef keep(&document);
    return Guarded([&] {
        try {
            return Report(LoadVariant(document, source), pSuccess);
        } catch (const ComError& error) {
            return Refuse(document, error.code, {});
        }
    });
}

HRESULT LoadText(Document& document, std::wstring_view text, VARIANT_BOOL* pSuccess) noexcept {
    if (pSuccess != nullptr) *pSuccess = VARIANT_FALSE;
    const NodeRef keep(&document);
    return Guarded([&] { return Report(Replace(document, {}, [&] { return EncodeText(text); }), pSuccess); });
}

HRESULT LoadBytes(Document& document, std::string_view bytes, const std::wstring& url) {
    return Replace(document, url, [&] { return DecodeBytes(bytes); });
}

void Empty(Document& document) noexcept {
    Tree::DetachChildren(document);
    document.SetFailure({});
    document.SetUrl({});
}

std::string ReadToEnd(ISequentialStream& stream) {
    std::string bytes;
    std::array<char, 8192> block;
    for (;;) {
        ULONG count = 0;
        ThrowIfFailed(stream.Read(block.data(), static_cast<ULONG>(block.size()), &count));
        if (count == 0) return bytes;
        if (count > block.size()) throw ComError{E_UNEXPECTED};
        bytes.append(block.data(), count);
    }
}

}  // namespace devkit::msxml
