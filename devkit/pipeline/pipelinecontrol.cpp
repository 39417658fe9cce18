#include "devkit/pipeline/pipelinecontrol.h"

#include "devkit/common/boundary.h"
#include "devkit/common/hresult.h"

namespace devkit::pipeline {

PipelineControl::PipelineControl(ContextPtr context) : ComIdentity(std::move(context), "PipelineControl") {}

std::vector<HRESULT> PipelineControl::ShutdownCodes() const {
    const std::lock_guard guard(m_lock);
    return m_shutdownCodes;
}

unsigned PipelineControl::FinishedCount() const {
    const std::lock_guard guard(m_lock);
    return m_finished;
}

HRESULT PipelineControl::RequestShutdown(HRESULT reason, IImgErrorInfo* pErrorInfo) {
    return common::Guarded([&]() -> HRESULT {
        {
            const std::lock_guard guard(m_lock);
            m_shutdownCodes.push_back(reason);
        }
        const HRESULT hr =
            Context().Calls().Enter("IPrintPipelineManagerControl::RequestShutdown", common::HexOf(reason));
        if (FAILED(hr)) return hr;
        if (pErrorInfo != nullptr) {
            return Context().Breach("RequestShutdown was called with an error info object", E_INVALIDARG);
        }
        return S_OK;
    });
}

HRESULT PipelineControl::FilterFinished() {
    return common::Guarded([&] {
        const HRESULT hr = Context().Calls().Enter("IPrintPipelineManagerControl::FilterFinished");
        const std::lock_guard guard(m_lock);
        ++m_finished;
        return hr;
    });
}

}  // namespace devkit::pipeline
