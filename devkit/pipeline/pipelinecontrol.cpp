#include "devkit/pipeline/pipelinecontrol.h"

#include "devkit/common/hresult.h"
#include "devkit/common/text.h"

namespace devkit::pipeline {

PipelineControl::PipelineControl(ContextPtr context) : ComObject(std::move(context), "PipelineControl") {}

std::vector<HRESULT> PipelineControl::ShutdownCodes() const {
    const std::lock_guard guard(m_lock);
    return m_shutdownCodes;
}

unsigned PipelineControl::FinishedCount() const {
    const std::lock_guard guard(m_lock);
    return m_finished;
}

HRESULT PipelineControl::RequestShutdown(HRESULT reason, IImgErrorInfo* pErrorInfo) {
    return Answer([&]() -> HRESULT {
        {
            const std::lock_guard guard(m_lock);
            m_shutdownCodes.push_back(reason);
        }
        const HRESULT hr =
            Context().Calls().Enter("IPrintPipelineManagerControl::RequestShutdown", common::HexOf(reason));
        if (FAILED(hr)) return hr;
        if (pErrorInfo != nullptr) {
            return Context().Breach(Check::ErrorInfo, "RequestShutdown was called with an error info object",
                                    E_INVALIDARG);
        }
        return S_OK;
    });
}

HRESULT PipelineControl::FilterFinished() {
    return Answer([&] {
        const HRESULT hr = Context().Calls().Enter("IPrintPipelineManagerControl::FilterFinished");
        const std::lock_guard guard(m_lock);
        ++m_finished;
        return hr;
    });
}

ProgressReport::ProgressReport(ContextPtr context) : ComObject(std::move(context), "ProgressReport") {}

ProgressCounts ProgressReport::Counts() const {
    const std::lock_guard guard(m_lock);
    return m_counts;
}

HRESULT ProgressReport::ReportProgress(EXpsJobConsumption consumption) {
    return Answer([&]() -> HRESULT {
        const HRESULT hr = Context().Calls().Enter("IPrintPipelineProgressReport::ReportProgress");
        if (FAILED(hr)) return hr;
        const std::lock_guard guard(m_lock);
        switch (consumption) {
            case XpsJob_DocumentSequenceAdded:
                ++m_counts.sequences;
                return S_OK;
            case XpsJob_FixedDocumentAdded:
                ++m_counts.documents;
                return S_OK;
            case XpsJob_FixedPageAdded:
                ++m_counts.pages;
                return S_OK;
        }
        return E_INVALIDARG;
    });
}

PrintClassFactory::PrintClassFactory(ContextPtr context)
    : ComObject(std::move(context), "PrintClassFactory") {}

HRESULT PrintClassFactory::GetPrintClassObject(const wchar_t*, REFIID iid, void** ppObject) {
    if (ppObject == nullptr) return E_POINTER;
    *ppObject = nullptr;
    return Answer([&]() -> HRESULT {
        const HRESULT hr = Context().Calls().Enter("IPrintClassObjectFactory::GetPrintClassObject");
        if (FAILED(hr)) return hr;
        Context().Missing("print class " + common::TextOf(iid));
        return E_NOINTERFACE;
    });
}

}  // namespace devkit::pipeline
