#include "devkit/pipeline/partobject.h"

#include "devkit/pipeline/fixedpageobject.h"
#include "devkit/pipeline/resourceobjects.h"
#include "devkit/pipeline/text.h"
#include "devkit/pipeline/ticketedobjects.h"
#include "platform/bstr.h"

namespace devkit::pipeline {
namespace {

using platform::ComPtr;

// What a call answers when the bytes of an input part cannot be read.
constexpr HRESULT inputUnreadable = static_cast<HRESULT>(0x8007000DL);  // ERROR_INVALID_DATA

// The object's identity, with the reference of its maker.
template <typename Object>
ComPtr<IUnknown> Make(const ContextPtr& context, const PartPtr& part) {
    ComPtr<IUnknown> identity;
    static_cast<void>(MakeObject<Object>(context, part).QueryTo(identity));
    return identity;
}

}  // namespace

PartPtr PartOf(IUnknown* pObject) noexcept {
    if (pObject == nullptr) return nullptr;
    ComPtr<IKitPart> kitPart;
    if (FAILED(pObject->QueryInterface(__uuidof(IKitPart), kitPart.PutVoid()))) return nullptr;
    return kitPart->GetPart();
}

ComPtr<IUnknown> MakePartObject(const ContextPtr& context, const PartPtr& part) {
    switch (part->Kind()) {
        case PartKind::XpsDocument:
            return Make<XpsDocumentObject>(context, part);
        case PartKind::FixedDocumentSequence:
            return Make<FixedDocumentSequenceObject>(context, part);
        case PartKind::FixedDocument:
            return Make<FixedDocumentObject>(context, part);
        case PartKind::FixedPage:
            return Make<FixedPageObject>(context, part);
        case PartKind::PrintTicket:
            return Make<PrintTicketObject>(context, part);
        case PartKind::Image:
            return Make<ImageObject>(context, part);
        case PartKind::Font:
            return Make<FontObject>(context, part);
        case PartKind::ColorProfile:
            return Make<ColorProfileObject>(context, part);
        case PartKind::ResourceDictionary:
            return Make<ResourceDictionaryObject>(context, part);
        case PartKind::Thumbnail:
            return Make<ThumbnailObject>(context, part);
        case PartKind::Unknown:
            break;
    }
    return Make<UnknownPartObject>(context, part);
}

HRESULT GetUriOf(const Part& part, BSTR* pUri) {
    if (pUri == nullptr) return E_POINTER;
    *pUri = nullptr;
    *pUri = platform::Bstr(Widen(part.Name())).Detach();
    return S_OK;
}

HRESULT GetContentTypeOf(const Part& part, BSTR* pContentType) {
    if (pContentType == nullptr) return E_POINTER;
    *pContentType = platform::Bstr(Widen(part.ContentType())).Detach();
    return S_OK;
}

HRESULT GetStreamOf(const ContextPtr& context, Part& part, IPrintReadStream** ppStream) {
    if (ppStream == nullptr) return E_POINTER;
    Bytes bytes;
    try {
        bytes = part.Read();
    } catch (const std::exception& error) {
        context->InputFailed(part.Name() + ": " + error.what());
        return inputUnreadable;
    }
    *ppStream = MakeObject<ReadStream>(context, part.Name(), std::move(bytes)).Detach();
    return S_OK;
}

HRESULT GetObjectOf(const ContextPtr& context, const PartPtr& part, REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    if (part == nullptr) {
        return context->GetSwitches().missingPart == MissingPart::NotFound ? E_ELEMENT_NOT_FOUND : S_OK;
    }
    return MakePartObject(context, part)->QueryInterface(iid, ppObject);
}

HRESULT AttachTicket(RunContext& context, Part& target, IPartPrintTicket* pPrintTicket) {
    if (pPrintTicket == nullptr) return E_POINTER;
    const PartPtr ticket = PartOf(pPrintTicket);
    if (ticket == nullptr || ticket->Kind() != PartKind::PrintTicket) {
        return context.Breach("SetPrintTicket of " + target.Title() +
                                  " was given an object that is not one of the pipeline's print tickets",
                              E_INVALIDARG);
    }
    if (ticket->IsBeingWritten()) {
        return context.Breach("SetPrintTicket of " + target.Title() + " was given " + ticket->Title() +
                              " while its write stream is open");
    }
    target.ticket = ticket;
    return S_OK;
}

}  // namespace devkit::pipeline
