#pragma once

#include "platform/windows.h"

#include "devkit/pipeline/resourceobjects.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// IFixedDocumentSequence and IFixedDocument, which have the same shape.
template <typename Interface>
class TicketedObject : public PartObject<Interface> {
  public:
    HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) override {
        return this->Call(m_methods.getUri, [&] { return GetUriOf(*this->m_part, pUri); });
    }
    HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppPrintTicket) override {
        if (ppPrintTicket != nullptr) *ppPrintTicket = nullptr;
        return this->Call(m_methods.getPrintTicket,
                          [&] { return GetTicketOf(this->SharedContext(), *this->m_part, ppPrintTicket); });
    }
    HRESULT STDMETHODCALLTYPE SetPrintTicket(IPartPrintTicket* pPrintTicket) override {
        return this->Call(m_methods.setPrintTicket, [&]() -> HRESULT {
            if (const HRESULT hr = this->CheckNotSent("SetPrintTicket"); FAILED(hr)) return hr;
            return AttachTicket(this->Context(), *this->m_part, pPrintTicket);
        });
    }

  protected:
    struct Methods {
        const char* getUri;
        const char* getPrintTicket;
        const char* setPrintTicket;
    };

    TicketedObject(ContextPtr context, PartPtr part, const Methods& methods)
        : PartObject<Interface>(std::move(context), std::move(part)), m_methods(methods) {}

  private:
    const Methods m_methods;
};

class FixedDocumentSequenceObject final : public TicketedObject<IFixedDocumentSequence> {
  public:
    FixedDocumentSequenceObject(ContextPtr context, PartPtr part)
        : TicketedObject(std::move(context), std::move(part),
                         {"IFixedDocumentSequence::GetUri", "IFixedDocumentSequence::GetPrintTicket",
                          "IFixedDocumentSequence::SetPrintTicket"}) {}
};

class FixedDocumentObject final : public TicketedObject<IFixedDocument> {
  public:
    FixedDocumentObject(ContextPtr context, PartPtr part)
        : TicketedObject(std::move(context), std::move(part),
                         {"IFixedDocument::GetUri", "IFixedDocument::GetPrintTicket",
                          "IFixedDocument::SetPrintTicket"}) {}
};

// The XPS document: the package itself, with its thumbnail.
class XpsDocumentObject : public PartObject<IXpsDocument> {
  public:
    using PartObject::PartObject;

    HRESULT STDMETHODCALLTYPE GetThumbnail(IPartThumbnail** ppThumbnail) override;
    HRESULT STDMETHODCALLTYPE SetThumbnail(IPartThumbnail* pThumbnail) override;
};

}  // namespace devkit::pipeline
