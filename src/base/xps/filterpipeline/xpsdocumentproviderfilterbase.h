#pragma once

#include "platform/windows.h"

#include <memory>

#include "base/xps/filterpipeline/xpsfilterbase.h"
#include "base/xps/printschema/printticketprovider.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

namespace base::xps::filterpipeline {

// The base of every filter that reads an XPS document part by part. Its operation opens the job's tickets,
// takes the reader from the communicator and pulls parts until there are no more; each part goes first to the
// print ticket provider, where its kind has a ticket, and then to the subclass's handler of its kind.
//
// A cancelled job is not looked for: the pipeline makes the reader fail or end. Any failure ends the
// operation; parts that were passed on stay passed on.
class XpsDocumentProviderFilterBase : public XpsFilterBase {
  protected:
    explicit XpsDocumentProviderFilterBase(
        std::unique_ptr<printschema::PrintTicketProvider> printTicketProvider =
            std::make_unique<printschema::PrintTicketProvider>());

    void DoOperation() override;
    void OnOperationEnd() override;
    void OnShutdownOperation() override;

    // The handlers; each is lent the part for the call.
    virtual void OnUnknownPart(IUnknown* pUnknown) = 0;
    virtual void OnFixedPage(IFixedPage* pFixedPage) = 0;
    virtual void OnFixedDocument(IFixedDocument* pFixedDoc) = 0;
    virtual void OnFixedDocumentSequence(IFixedDocumentSequence* pFixedDocSequence) = 0;
    virtual void OnXpsDocument(IXpsDocument* pXpsDocument) = 0;

    [[nodiscard]] printschema::PrintTicketProvider& GetPrintTicketProvider() const noexcept {
        return *m_printTicketProvider;
    }

  private:
    void OpenPrintTicketProvider();
    void Dispatch(IUnknown* pPart, IXMLDOMDocument2* pDefaultTicket);

    std::unique_ptr<printschema::PrintTicketProvider> m_printTicketProvider;
    platform::ComPtr<IXpsDocumentProvider> m_pReader;
};

}  // namespace base::xps::filterpipeline
