#pragma once

#include "platform/windows.h"

#include <functional>
#include <memory>
#include <utility>

#include "devkit/common/countedobject.h"
#include "devkit/pipeline/filtermodule.h"
#include "platform/comobject.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// What a filter is given.
struct GivenToFilter {
    platform::ComPtr<IInterFilterCommunicator> communicator;
    platform::ComPtr<IPrintPipelinePropertyBag> bag;
    platform::ComPtr<IPrintPipelineManagerControl> control;
};

// What a filter of a test does; what is empty succeeds.
struct FilterScript {
    std::function<HRESULT(GivenToFilter&)> initialize{};
    std::function<HRESULT(GivenToFilter&)> start{};
    std::function<HRESULT()> shutdown{};
    std::function<void()> released{};
};

// A filter in the test program that follows a script.
class ScriptedFilter final : public platform::ComIdentity<common::CountedObject, IPrintPipelineFilter> {
  public:
    explicit ScriptedFilter(std::shared_ptr<const FilterScript> script) : m_script(std::move(script)) {}

    HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator* pICommunicator,
                                               IPrintPipelinePropertyBag* pIPropertyBag,
                                               IPrintPipelineManagerControl* pIPipelineControl) override {
        m_given.communicator = platform::ComPtr(pICommunicator);
        m_given.bag = platform::ComPtr(pIPropertyBag);
        m_given.control = platform::ComPtr(pIPipelineControl);
        return m_script->initialize ? m_script->initialize(m_given) : S_OK;
    }
    HRESULT STDMETHODCALLTYPE ShutdownOperation() override {
        return m_script->shutdown ? m_script->shutdown() : S_OK;
    }
    HRESULT STDMETHODCALLTYPE StartOperation() override {
        return m_script->start ? m_script->start(m_given) : S_OK;
    }

  private:
    ~ScriptedFilter() override {
        if (m_script->released) m_script->released();
    }

    const std::shared_ptr<const FilterScript> m_script;
    GivenToFilter m_given;
};

// Where filters with a script come from.
class ScriptedSource final : public FilterSource {
  public:
    explicit ScriptedSource(FilterScript script)
        : m_script(std::make_shared<const FilterScript>(std::move(script))) {}

    platform::ComPtr<IPrintPipelineFilter> CreateFilter() override {
        return platform::ComPtr<IPrintPipelineFilter>(platform::MakeObject<ScriptedFilter>(m_script).Get());
    }
    HRESULT CanUnloadNow() override { return S_OK; }

  private:
    const std::shared_ptr<const FilterScript> m_script;
};

}  // namespace devkit::pipeline
