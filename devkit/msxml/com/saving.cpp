#include "devkit/msxml/com/saving.h"

#include <algorithm>

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/facade.h"
#include "devkit/msxml/com/values.h"
#include "devkit/msxml/text/serialiser.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/variant.h"

namespace devkit::msxml {

namespace {

// Into a document that is no stream.
HRESULT SaveInto(const Document& document, IXMLDOMDocument& target) {
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    const platform::Bstr text(Serialise(document, Output::Shown));
    const HRESULT result = target.loadXML(text.Get(), &isLoaded);
    return result == S_OK ? S_OK : FAILED(result) ? result : E_FAIL;
}

HRESULT SaveTo(const Document& document, IUnknown* pTarget) {
    const platform::ComPtr<IUnknown> target(pTarget);
    if (!target) return E_INVALIDARG;
    const std::string bytes = SavedBytes(document);
    platform::ComPtr<IStream> pStream;
    if (SUCCEEDED(target.QueryTo(pStream))) {
        WriteWhole(*pStream.Get(), bytes);
        // A document takes in what its stream was given; a stream that was passed as one is the caller's.
        const NodeRef pNode = NodeOf(pTarget);
        return pNode && pNode->Is(Kind::Document) ? pStream->Commit(STGC_DEFAULT) : S_OK;
    }
    platform::ComPtr<IXMLDOMDocument> pForeign;
    return SUCCEEDED(target.QueryTo(pForeign)) ? SaveInto(document, *pForeign.Get()) : E_INVALIDARG;
}

}  // namespace

HRESULT Save(const Document& document, const VARIANT& destination) noexcept {
    return Guarded([&] {
        platform::Variant direct;
        CopyDirect(destination, direct);
        return direct.Text() != nullptr ? E_NOTIMPL : SaveTo(document, direct.Unknown());
    });
}

void WriteWhole(ISequentialStream& stream, std::string_view bytes) {
    constexpr std::size_t kLongestWrite = 1 << 30;
    while (!bytes.empty()) {
        ULONG written = 0;
        const auto wanted = static_cast<ULONG>(std::min(bytes.size(), kLongestWrite));
        common::ThrowIfFailed(stream.Write(bytes.data(), wanted, &written));
        if (written == 0) throw common::HresultError(STG_E_MEDIUMFULL);
        if (written > wanted) throw common::HresultError(E_UNEXPECTED);
        bytes.remove_prefix(written);
    }
}

}  // namespace devkit::msxml
