#pragma once

#include "platform/windows.h"

#include <cstdint>
#include <memory>
#include <string>

#include "base/xps/filterpipeline/xpsdocumentproviderfilterbase.h"
#include "base/xps/pageticket.h"
#include "base/xps/printschema/inputbindata.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/pageorientationdata.h"
#include "base/xps/printschema/printablemediasizedata.h"
#include "base/xps/printschema/printticketprovider.h"
#include "base/xps/printschema/scalingdata.h"
#include "pagevalidatefilter/module.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/srwlock.h"

namespace pagevalidatefilter {

// {8A9F4692-E8BA-4533-B859-E56B1EA16586}, by which the driver's pipeline configuration names the filter.
inline constexpr CLSID CLSID_PageValidateXpsFilter = {
    0x8a9f4692, 0xe8ba, 0x4533, {0xb8, 0x59, 0xe5, 0x6b, 0x1e, 0xa1, 0x65, 0x86}};

// Passes every part on to the next filter unchanged, except that a fixed page is validated first. The
// settings that a page is validated with are read anew from the effective ticket of each sequence, document
// and page. It counts as one live object of the module.
class PageValidateXpsFilter : private ModuleReference,  // the last to go
                              public base::xps::filterpipeline::XpsDocumentProviderFilterBase {
  public:
    explicit PageValidateXpsFilter(
        std::unique_ptr<base::xps::printschema::PrintTicketProvider> printTicketProvider =
            std::make_unique<base::xps::printschema::PrintTicketProvider>());

  protected:
    ~PageValidateXpsFilter() override = default;

    // Take the writer first; close it last, or when the pipeline cancels. It is kept afterwards, so a
    // cancelled job may close it twice.
    void DoOperation() override;
    void OnOperationEnd() override;
    void OnShutdownOperation() override;

    // A null part throws std::invalid_argument, a writer that refuses HresultError.
    void OnUnknownPart(IUnknown* pUnknown) override;
    void OnFixedPage(IFixedPage* pFixedPage) override;
    void OnFixedDocument(IFixedDocument* pFixedDoc) override;
    void OnFixedDocumentSequence(IFixedDocumentSequence* pFixedDocSequence) override;
    void OnXpsDocument(IXpsDocument* pXpsDocument) override;

  private:
    // What the settings were read from last; reading it again would change none of them.
    struct SettingsSource {
        std::uint64_t ticketVersion = 0;
        std::wstring privatePrefix;

        [[nodiscard]] bool operator==(const SettingsSource&) const = default;
    };

    // Throws HresultError when the scope has no effective ticket. A setting that the ticket does not state
    // stays as it was.
    void RefreshSettings(EPrintTicketScope scope);
    void OpenWriter();
    void CloseWriter();
    [[nodiscard]] platform::ComPtr<IXpsDocumentConsumer> Writer() const;

    // Set by the operation's thread, read by a cancelling one.
    mutable platform::SrwLock m_writerLock;
    platform::ComPtr<IXpsDocumentConsumer> m_pWriter;
    base::xps::printschema::ScalingData m_pageScaling;
    base::xps::printschema::InputBinData m_feedDirection;
    base::xps::printschema::MediaSizeData m_mediaSize;
    base::xps::printschema::PageOrientationData m_pageOrientation;
    base::xps::printschema::PrintableMediaSizeData m_printableMediaSize;
    SettingsSource m_settingsSource;
    // For the pages of this operation.
    base::xps::EmptyTicket m_emptyTicket;
};

}  // namespace pagevalidatefilter
