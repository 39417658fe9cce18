#pragma once

#include "platform/windows.h"

#include <mutex>
#include <vector>

#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// The pipeline's control object: keeps what the filter reports. Any thread may call.
class PipelineControl final : public ComObject<IPrintPipelineManagerControl> {
  public:
    explicit PipelineControl(ContextPtr context);

    // The codes of RequestShutdown, in order.
    [[nodiscard]] std::vector<HRESULT> ShutdownCodes() const;
    [[nodiscard]] unsigned FinishedCount() const;

    // An error info object is a breach: the platform demands null.
    HRESULT STDMETHODCALLTYPE RequestShutdown(HRESULT reason, IImgErrorInfo* pErrorInfo) override;
    HRESULT STDMETHODCALLTYPE FilterFinished() override;

  private:
    mutable std::mutex m_lock;
    std::vector<HRESULT> m_shutdownCodes;
    unsigned m_finished = 0;
};

}  // namespace devkit::pipeline
