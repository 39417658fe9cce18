#include "base/xps/filterpipeline/xpsdocumentproviderfilterbase.h"

#include <stdexcept>
#include <utility>

#include "base/logging/check.h"
#include "base/xps/filterpipeline/defaultprinttickets.h"
#include "platform/variant.h"

namespace base::xps::filterpipeline {

using logging::ThrowHresult;
using logging::ThrowIfFailed;
using platform::ComPtr;
using platform::Variant;

namespace {

ComPtr<IPrintReadStream> OpenStream(const Variant& factoryValue) {
    if (factoryValue.Unknown() == nullptr) ThrowHresult(DISP_E_TYPEMISMATCH);
    ComPtr<IPrintReadStreamFactory> pFactory;
    ThrowIfFailed(ComPtr<IUnknown>(factoryValue.Unknown()).QueryTo(pFactory));
    ComPtr<IPrintReadStream> pStream;
    ThrowIfFailed(pFactory->GetStream(pStream.Put()));
    return pStream;
}

}  // namespace

XpsDocumentProviderFilterBase::XpsDocumentProviderFilterBase(
    std::unique_ptr<printschema::PrintTicketProvider> printTicketProvider)
    : m_printTicketProvider(std::move(printTicketProvider)) {}

void XpsDocumentProviderFilterBase::DoOperation() {
    OpenPrintTicketProvider();
    RequestReader<IXpsDocumentProvider>(m_pReader.Put());
    if (!m_pReader) throw std::logic_error("m_pReader could not get.");
    const ComPtr<IXMLDOMDocument2> pDefaultTicket = CreateDefaultPrintTicket(GetPropertyBag());
    for (;;) {
        ComPtr<IUnknown> pPart;
        ThrowIfFailed(m_pReader->GetXpsPart(pPart.Put()));
        if (!pPart) return;
        Dispatch(pPart.Get(), pDefaultTicket.Get());
    }
}

void XpsDocumentProviderFilterBase::OnOperationEnd() {
    // The job's result stands whatever closing says, and the next filter is still to be told of the end.
    static_cast<void>(m_printTicketProvider->Close());
}

void XpsDocumentProviderFilterBase::OnShutdownOperation() {}

void XpsDocumentProviderFilterBase::OpenPrintTicketProvider() {
    Variant userTicket;
    Variant printerName;
    Variant userToken;
    ThrowIfFailed(GetPropertyBag()->GetProperty(L"PerUserPrintTicket", userTicket.Put()));
    ThrowIfFailed(GetPropertyBag()->GetProperty(L"PrinterName", printerName.Put()));
    ThrowIfFailed(GetPropertyBag()->GetProperty(L"UserSecurityToken", userToken.Put()));
    // Without a handle the thread would take no token at all, and the provider would be called as the service
    // and not as the user.
    if (userToken.Type() != VT_BYREF || userToken.Handle() == nullptr) ThrowHresult(DISP_E_TYPEMISMATCH);
    const ComPtr<IPrintReadStream> pUserTicket = OpenStream(userTicket);
    ThrowIfFailed(m_printTicketProvider->Open(pUserTicket.Get(), printerName.Text(), userToken.Handle()));
}

void XpsDocumentProviderFilterBase::Dispatch(IUnknown* pPart, IXMLDOMDocument2* pDefaultTicket) {
    const ComPtr<IUnknown> part(pPart);
    if (ComPtr<IXpsDocument> pDocument; SUCCEEDED(part.QueryTo(pDocument))) {
        OnXpsDocument(pDocument.Get());
    } else if (ComPtr<IFixedDocumentSequence> pSequence; SUCCEEDED(part.QueryTo(pSequence))) {
        ThrowIfFailed(m_printTicketProvider->SetJobTicket(pSequence.Get(), pDefaultTicket));
        OnFixedDocumentSequence(pSequence.Get());
    } else if (ComPtr<IFixedDocument> pFixedDocument; SUCCEEDED(part.QueryTo(pFixedDocument))) {
        ThrowIfFailed(m_printTicketProvider->SetDocumentTicket(pFixedDocument.Get(), pDefaultTicket));
        OnFixedDocument(pFixedDocument.Get());
    } else if (ComPtr<IFixedPage> pPage; SUCCEEDED(part.QueryTo(pPage))) {
        ThrowIfFailed(m_printTicketProvider->SetPageTicket(pPage.Get(), pDefaultTicket));
        OnFixedPage(pPage.Get());
    } else {
        OnUnknownPart(pPart);
    }
}

}  // namespace base::xps::filterpipeline
