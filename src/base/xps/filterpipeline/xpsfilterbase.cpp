#include "base/xps/filterpipeline/xpsfilterbase.h"

#include "base/logging/boundary.h"
#include "base/utility/safecoinit.h"
#include "base/xps/filterpipeline/driverpropertybag.h"
#include "base/xps/printschema/privateprefix.h"
#include "platform/variant.h"

namespace base::xps::filterpipeline {

using logging::Guarded;
using platform::ComPtr;

XpsFilterBase::XpsFilterBase() { ++s_liveInstances; }

XpsFilterBase::~XpsFilterBase() { --s_liveInstances; }

HRESULT XpsFilterBase::InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                        IPrintPipelinePropertyBag* pIPropertyBag,
                                        IPrintPipelineManagerControl* pIPipelineControl) {
    if (pICommunicator == nullptr || pIPropertyBag == nullptr || pIPipelineControl == nullptr) return E_FAIL;
    return Guarded([&] {
        m_pINegotiation = ComPtr(pICommunicator);
        m_pIPropertyBag = ComPtr(pIPropertyBag);
        m_pIPipelineControl = ComPtr(pIPipelineControl);
        const platform::Bstr prefix = DriverPropertyBag(pIPropertyBag).ReadString(L"KoraNsPrefix");
        printschema::SetPrivatePrefix(prefix.View());
        return S_OK;
    });
}

HRESULT XpsFilterBase::ShutdownOperation() {
    const HRESULT stopped = Guarded([&] {
        OnShutdownOperation();
        return S_OK;
    });
    const HRESULT finished = Guarded([&] {
        FilterFinished();
        return S_OK;
    });
    return stopped == S_OK && finished == S_OK ? S_OK : E_FAIL;
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
