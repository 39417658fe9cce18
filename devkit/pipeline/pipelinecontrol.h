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

// How often the filter reported that it has used up a part of each kind.
struct ProgressCounts {
    unsigned sequences = 0;
    unsigned documents = 0;
    unsigned pages = 0;

    bool operator==(const ProgressCounts&) const = default;
};

// The object of the "ProgressReport" property: counts. Any thread may call.
class ProgressReport final : public ComObject<IPrintPipelineProgressReport> {
  public:
    explicit ProgressReport(ContextPtr context);

    [[nodiscard]] ProgressCounts Counts() const;

    // E_INVALIDARG for a kind that is none.
    HRESULT STDMETHODCALLTYPE ReportProgress(EXpsJobConsumption consumption) override;

  private:
    mutable std::mutex m_lock;
    ProgressCounts m_counts;
};

// The object of the "PrintClassFactory" property. It has no class to give: each is noted as missing, by its
// interface, and refused with E_NOINTERFACE.
class PrintClassFactory final : public ComObject<IPrintClassObjectFactory> {
  public:
    explicit PrintClassFactory(ContextPtr context);

    HRESULT STDMETHODCALLTYPE GetPrintClassObject(const wchar_t* printer, REFIID iid,
                                                  void** ppObject) override;
};

}  // namespace devkit::pipeline
