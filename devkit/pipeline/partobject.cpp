#include "devkit/pipeline/partobject.h"

#include "platform/bstr.h"
#include "platform/utf.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

// What a call answers when the bytes of an input part cannot be read.
constexpr HRESULT kInputUnreadable = static_cast<HRESULT>(0x8007000DL);  // ERROR_INVALID_DATA

}  // namespace

PartPtr PartOf(IUnknown* pObject) noexcept {
    if (pObject == nullptr) return nullptr;
    ComPtr<IKitPart> kitPart;
    if (FAILED(pObject->QueryInterface(__uuidof(IKitPart), kitPart.PutVoid()))) return nullptr;
    return kitPart->GetPart();
}

HRESULT GetUriOf(const Part& part, BSTR* pUri) {
    if (pUri == nullptr) return E_POINTER;
    *pUri = nullptr;
    *pUri = platform::Bstr(platform::ToUtf16(part.Name())).Detach();
    return S_OK;
}

HRESULT GetContentTypeOf(const Part& part, BSTR* pContentType) {
    if (pContentType == nullptr) return E_POINTER;
    *pContentType = platform::Bstr(platform::ToUtf16(part.ContentType())).Detach();
    return S_OK;
}

HRESULT GetStreamOf(const ContextPtr& context, Part& part, IPrintReadStream** ppStream) {
    if (ppStream == nullptr) return E_POINTER;
    Bytes bytes;
    try {
        bytes = part.ReadPlain();
    } catch (const std::exception& error) {
        context->InputFailed(part.Name() + ": " + error.what());
        return kInputUnreadable;
    }
    *ppStream = MakeObject<ReadStream>(context, part.Name(), std::move(bytes)).Detach();
    return S_OK;
}

}  // namespace devkit::pipeline
