#include "base/xps/filterpipeline/xpsfilterbase.h"

#include "base/logging/boundary.h"
#include "base/utility/safecoinit.h"
#include "base/xps/filterpipeline/driverpropertybag.h"
#include "base/xps/printschema/privateprefix.h"
#include "platform/variant.h"

namespace base::xps::filterpipeline {

using logging::Guarded;
using platform::ComPtr;

namespace {

// An exception is a failure whatever code it carries.
template <typename Step>
[[nodiscard]] bool Succeeds(Step&& step) noexcept {
    try {
        step();
        return true;
    } catch (...) {
        return false;
    }
}

// Without memory for the prefix there is none.
void SetPrivatePrefixFrom(IPrintPipelinePropertyBag* pPipelineBag) noexcept {
    const bool isSet = Succeeds([&] {
        printschema::SetPrivatePrefix(DriverPropertyBag(pPipelineBag).ReadString(L"KoraNsPrefix").View());
    });
    if (!isSet) printschema::SetPrivatePrefix({});
}

}  // namespace

XpsFilterBase::XpsFilterBase() { ++s_liveInstances; }

XpsFilterBase::~XpsFilterBase() { --s_liveInstances; }

HRESULT XpsFilterBase::InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                        IPrintPipelinePropertyBag* pIPropertyBag,
                                        IPrintPipelineManagerControl* pIPipelineControl) {
    if (pICommunicator == nullptr || pIPropertyBag == nullptr || pIPipelineControl == nullptr) return E_FAIL;
    m_pINegotiation = ComPtr(pICommunicator);
    m_pIPropertyBag = ComPtr(pIPropertyBag);
    m_pIPipelineControl = ComPtr(pIPipelineControl);
    SetPrivatePrefixFrom(pIPropertyBag);
    return S_OK;
}

HRESULT XpsFilterBase::ShutdownOperation() {
    const bool isStopped = Succeeds([this] { OnShutdownOperation(); });
    const bool isFinished = Succeeds([this] { FilterFinished(); });
    return isStopped && isFinished ? S_OK : E_FAIL;
}

HRESULT XpsFilterBase::StartOperation() {
    if (!m_pINegotiation || !m_pIPropertyBag || !m_pIPipelineControl) return E_FAIL;
    return Guarded([&] {
        const utility::SafeCoInit apartment;
        const HRESULT status = Guarded([&] {
            DoOperation();
            return S_OK;
        });
        OnOperationEnd();
        if (FAILED(status)) RequestShutdown(status);
        return status;
    });
}

const utility::DriverInfo& XpsFilterBase::GetDriverInfo() {
    if (!m_pIPropertyBag) logging::Throw<std::logic_error>("invalid function call sequence.");
    if (!m_driverInfo) {
        platform::Variant printer;
        logging::ThrowIfFailed(m_pIPropertyBag->GetProperty(L"PrinterHandle", printer.Put()));
        m_driverInfo = std::make_unique<utility::DriverInfo>(printer.Handle());
    }
    return *m_driverInfo;
}

void XpsFilterBase::FilterFinished() {
    if (m_pIPipelineControl) logging::ThrowIfFailed(m_pIPipelineControl->FilterFinished());
}

void XpsFilterBase::RequestShutdown(HRESULT reason) {
    if (m_pIPipelineControl) logging::ThrowIfFailed(m_pIPipelineControl->RequestShutdown(reason, nullptr));
}

}  // namespace base::xps::filterpipeline
