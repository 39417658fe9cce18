#include <gtest/gtest.h>

#include "devkit/pipeline/fixture.h"
#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {
namespace {

using Lines = std::vector<std::string>;

// An object with two interfaces, so with two places that point to a table of methods.
class TwoFaced final : public ComObject<IPrintPipelineManagerControl, IPrintPipelineFilter> {
  public:
    explicit TwoFaced(ContextPtr context) : ComObject(std::move(context), "TwoFaced /x") {}
    HRESULT STDMETHODCALLTYPE RequestShutdown(HRESULT, IImgErrorInfo*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE FilterFinished() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator*, IPrintPipelinePropertyBag*,
                                               IPrintPipelineManagerControl*) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ShutdownOperation() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE StartOperation() override { return S_OK; }

  private:
    ~TwoFaced() override = default;
};

TEST(Graveyard, ACallAfterTheLastReleaseIsABreachThatNamesTheObject) {
    const auto context = std::make_shared<RunContext>();
    auto* const pObject = new TwoFaced(context);
    IPrintPipelineManagerControl* const pControl = pObject;
    IPrintPipelineFilter* const pFilter = pObject;
    EXPECT_EQ(0U, pControl->Release());
    EXPECT_EQ(0U, pControl->Release());
    EXPECT_EQ(0U, pFilter->AddRef());
    void* pNothing = nullptr;
    EXPECT_EQ(E_UNEXPECTED, pFilter->QueryInterface(__uuidof(IUnknown), &pNothing));
    EXPECT_EQ(E_UNEXPECTED, pFilter->StartOperation());
    EXPECT_EQ((Lines{"Release of TwoFaced /x came after its last Release",
                     "AddRef of TwoFaced /x came after its last Release",
                     "QueryInterface of TwoFaced /x came after its last Release",
                     "a method of TwoFaced /x came after its last Release"}),
              context->Breaches().Lines());
}

TEST(Graveyard, TheBreachesOfARunThatIsOverAreNobodys) {
    auto context = std::make_shared<RunContext>();
    IPrintPipelineFilter* const pFilter = new TwoFaced(context);
    pFilter->Release();
    context.reset();
    EXPECT_EQ(E_UNEXPECTED, pFilter->StartOperation());
}

TEST(Graveyard, EndlessRunsDoNotFillTheMemory) {
    const auto context = std::make_shared<RunContext>();
    for (int i = 0; i < 100000; ++i) (new TwoFaced(context))->Release();
    IPrintPipelineFilter* const pLast = new TwoFaced(context);
    pLast->Release();
    EXPECT_EQ(E_UNEXPECTED, pLast->StartOperation());
    EXPECT_EQ(1U, context->Breaches().Lines().size());
}

}  // namespace
}  // namespace devkit::pipeline
