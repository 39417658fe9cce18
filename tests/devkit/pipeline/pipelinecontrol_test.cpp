#include "devkit/pipeline/pipelinecontrol.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

class PipelineControlTest : public PipelineTest {};

TEST_F(PipelineControlTest, KeepsTheCodesInOrder) {
    const auto control = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(control->RequestShutdown(E_ABORT, nullptr), S_OK);
    EXPECT_EQ(control->RequestShutdown(S_OK, nullptr), S_OK);
    EXPECT_EQ(control->ShutdownCodes(), (std::vector<HRESULT>{E_ABORT, S_OK}));
}

TEST_F(PipelineControlTest, AnErrorInfoIsABreachAndTheCodeIsKept) {
    const auto control = MakeObject<PipelineControl>(Context());
    int place = 0;
    EXPECT_EQ(control->RequestShutdown(E_ABORT, reinterpret_cast<IImgErrorInfo*>(&place)), E_INVALIDARG);
    EXPECT_EQ(control->ShutdownCodes(), std::vector<HRESULT>{E_ABORT});
    EXPECT_EQ(Breaches(), Lines{"RequestShutdown was called with an error info object"});
}

TEST_F(PipelineControlTest, CountsFilterFinished) {
    const auto control = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(control->FinishedCount(), 0U);
    EXPECT_EQ(control->FilterFinished(), S_OK);
    EXPECT_EQ(control->FilterFinished(), S_OK);
    EXPECT_EQ(control->FinishedCount(), 2U);
}

TEST_F(PipelineControlTest, FailsAsPlanned) {
    Switches switches = Failing("RequestShutdown", E_HANDLE);
    switches.faults.push_back({"FilterFinished", "", 1, E_UNEXPECTED, false});
    Use(switches);
    const auto control = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(control->RequestShutdown(E_ABORT, nullptr), E_HANDLE);
    EXPECT_EQ(control->FilterFinished(), E_UNEXPECTED);
}

}  // namespace
}  // namespace devkit::pipeline
