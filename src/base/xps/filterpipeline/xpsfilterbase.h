#pragma once

#include "platform/windows.h"

#include <atomic>
#include <memory>
#include <stdexcept>

#include "base/logging/check.h"
#include "base/utility/driverinfo.h"
#include "platform/comobject.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace base::xps::filterpipeline {

// The base of every filter object: its identity, its life cycle under the pipeline, and access to what the
// pipeline gave it. A subclass fills in the operation. Made with one reference, destroyed by the last
// Release.
//
// StartOperation runs on a thread of the pipeline; ShutdownOperation may come from another one meanwhile.
// Subclasses throw; only the methods of IPrintPipelineFilter turn exceptions into HRESULTs.
class XpsFilterBase : public platform::ComIdentity<platform::ReferenceCount, IPrintPipelineFilter> {
  public:
    // Keeps the three objects and sets the prefix of the private print schema namespace from the driver's
    // property bag. E_FAIL for a null argument; a driver without a property bag is no failure.
    HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                               IPrintPipelinePropertyBag* pIPropertyBag,
                                               IPrintPipelineManagerControl* pIPipelineControl) override;

    // The cancel request. E_FAIL, whatever the cause, when the subclass or the pipeline control fails.
    HRESULT STDMETHODCALLTYPE ShutdownOperation() override;

    // Runs the operation in a COM apartment and returns when it is over. The result of a failed operation is
    // given to RequestShutdown once, after OnOperationEnd. E_FAIL before InitializeFilter succeeded.
    HRESULT STDMETHODCALLTYPE StartOperation() override;

  protected:
    XpsFilterBase();
    ~XpsFilterBase() override;

  public:
    // What the spooler knows of the printer's driver, read when first asked for and valid as long as the
    // filter. std::logic_error before InitializeFilter, HresultError without a "PrinterHandle",
    // std::runtime_error when the spooler refuses.
    [[nodiscard]] virtual const utility::DriverInfo& GetDriverInfo();

  protected:
    // The body of the operation.
    virtual void DoOperation() = 0;
    // Follows the body, also one that failed. What it throws takes the place of the body's result and is not
    // given to RequestShutdown.
    virtual void OnOperationEnd() = 0;
    // The pipeline cancels: safe against a DoOperation that runs on another thread.
    virtual void OnShutdownOperation() = 0;

    // The communicator's reader or writer, referenced for the caller. An object that is not of the expected
    // kind is kept all the same: the pipeline is asked to shut down, with S_OK, and nothing is thrown.
    // std::invalid_argument for a null address, std::logic_error before InitializeFilter, HresultError when
    // the communicator refuses.
    template <typename Stream>
    void RequestReader(Stream** ppStream) {
        RequestStream(ppStream, &IInterFilterCommunicator::RequestReader);
    }
    template <typename Stream>
    void RequestWriter(Stream** ppStream) {
        RequestStream(ppStream, &IInterFilterCommunicator::RequestWriter);
    }

    // Borrowed; null before InitializeFilter.
    [[nodiscard]] IPrintPipelinePropertyBag* GetPropertyBag() const noexcept { return m_pIPropertyBag.Get(); }

    // Each does nothing without a pipeline control and throws HresultError when the call fails.
    void FilterFinished();
    void RequestShutdown(HRESULT reason);

    // How many objects of this kind live in the process.
    static inline std::atomic<LONG> s_liveInstances = 0;

  private:
    using Request = HRESULT (STDMETHODCALLTYPE IInterFilterCommunicator::*)(void**);

    template <typename Stream>
    void RequestStream(Stream** ppStream, Request request) {
        logging::ThrowIfNull(ppStream, "ppStream is null.");
        if (!m_pINegotiation) throw std::logic_error("This function must be called after SetUp() call.");
        logging::ThrowIfFailed((m_pINegotiation.Get()->*request)(reinterpret_cast<void**>(ppStream)));
        platform::ComPtr<Stream> pChecked;
        if (FAILED(platform::ComPtr<IUnknown>(*ppStream).QueryTo(pChecked))) RequestShutdown(S_OK);
    }

    platform::ComPtr<IInterFilterCommunicator> m_pINegotiation;
    platform::ComPtr<IPrintPipelinePropertyBag> m_pIPropertyBag;
    platform::ComPtr<IPrintPipelineManagerControl> m_pIPipelineControl;
    std::unique_ptr<utility::DriverInfo> m_driverInfo;
};

}  // namespace base::xps::filterpipeline
