#include "pagevalidatefilter/pagevalidatexpsfilter.h"

#include <mutex>
#include <stdexcept>
#include <utility>

#include "base/logging/check.h"
#include "base/xps/fixedpagevalidator.h"

namespace pagevalidatefilter {

using base::logging::ThrowIfFailed;
using base::logging::ThrowIfNull;
using base::xps::printschema::PrintTicketHandler;
using base::xps::printschema::PrivatePrefix;
using platform::ComPtr;

PageValidateXpsFilter::PageValidateXpsFilter(
    std::unique_ptr<base::xps::printschema::PrintTicketProvider> printTicketProvider)
    : XpsDocumentProviderFilterBase(std::move(printTicketProvider)) {}

void PageValidateXpsFilter::DoOperation() {
    OpenWriter();
    XpsDocumentProviderFilterBase::DoOperation();
}

void PageValidateXpsFilter::OpenWriter() {
    ComPtr<IXpsDocumentConsumer> pWriter;
    const auto keep = [&] {
        const std::scoped_lock lock(m_writerLock);
        m_pWriter = std::move(pWriter);
    };
    try {
        RequestWriter<IXpsDocumentConsumer>(pWriter.Put());
    } catch (...) {
        // One that was given has to be closed, whatever its check came to.
        keep();
        throw;
    }
    if (!pWriter) throw std::logic_error("m_pWriter could not get.");
    keep();
}

void PageValidateXpsFilter::OnOperationEnd() {
    m_emptyTicket.Release();
    XpsDocumentProviderFilterBase::OnOperationEnd();
    CloseWriter();
}

void PageValidateXpsFilter::OnShutdownOperation() {
    XpsDocumentProviderFilterBase::OnShutdownOperation();
    CloseWriter();
}

void PageValidateXpsFilter::OnUnknownPart(IUnknown* pUnknown) {
    ThrowIfNull(pUnknown, "pUnknown is null.");
    ThrowIfFailed(Writer()->SendXpsUnknown(pUnknown));
}

void PageValidateXpsFilter::OnFixedPage(IFixedPage* pFixedPage) {
    ThrowIfNull(pFixedPage, "pFixedPage is null.");
    RefreshSettings(kPTPageScope);
    const ComPtr<IXpsDocumentConsumer> pWriter = Writer();
    base::xps::FixedPageValidator validator(GetPrintTicketProvider(), pWriter.Get(), pFixedPage,
                                            m_feedDirection, m_mediaSize, m_pageOrientation, m_pageScaling,
                                            m_printableMediaSize);
    validator.SetEmptyTicket(&m_emptyTicket);
    validator.Validate();
    ThrowIfFailed(pWriter->SendFixedPage(pFixedPage));
}

void PageValidateXpsFilter::OnFixedDocument(IFixedDocument* pFixedDoc) {
    ThrowIfNull(pFixedDoc, "pFixedDoc is null.");
    RefreshSettings(kPTDocumentScope);
    ThrowIfFailed(Writer()->SendFixedDocument(pFixedDoc));
}

void PageValidateXpsFilter::OnFixedDocumentSequence(IFixedDocumentSequence* pFixedDocSequence) {
    ThrowIfNull(pFixedDocSequence, "pFixedDocSequence is null.");
    RefreshSettings(kPTJobScope);
    ThrowIfFailed(Writer()->SendFixedDocumentSequence(pFixedDocSequence));
}

void PageValidateXpsFilter::OnXpsDocument(IXpsDocument* pXpsDocument) {
    ThrowIfNull(pXpsDocument, "pXpsDocument is null.");
    ThrowIfFailed(Writer()->SendXpsDocument(pXpsDocument));
}

void PageValidateXpsFilter::RefreshSettings(EPrintTicketScope scope) {
    base::xps::printschema::PrintTicketProvider& provider = GetPrintTicketProvider();
    ComPtr<IXMLDOMDocument2> pTicket;
    ThrowIfFailed(provider.ReadTicket(scope, pTicket.Put()));
    SettingsSource source = {provider.TicketVersion(scope), PrivatePrefix()};
    if (source.ticketVersion != 0 && source == m_settingsSource) return;

    // Until all five are read they are of no ticket in particular.
    m_settingsSource = {};
    const PrintTicketHandler ticket(pTicket.Get());
    m_pageScaling.ReadFrom(ticket);
    m_feedDirection.ReadFrom(ticket);
    m_mediaSize.ReadFrom(ticket);
    m_pageOrientation.ReadFrom(ticket);
    m_printableMediaSize.ReadFrom(ticket);
    m_settingsSource = std::move(source);
}

void PageValidateXpsFilter::CloseWriter() {
    if (const ComPtr<IXpsDocumentConsumer> pWriter = Writer()) ThrowIfFailed(pWriter->CloseSender());
}

ComPtr<IXpsDocumentConsumer> PageValidateXpsFilter::Writer() const {
    const std::scoped_lock lock(m_writerLock);
    return m_pWriter;
}

}  // namespace pagevalidatefilter
