#include "devkit/pipeline/pipelinecontrol.h"

#include "devkit/pipeline/fixture.h"

namespace devkit::pipeline {
namespace {

class PipelineControlTest : public PipelineTest {};

TEST_F(PipelineControlTest, KeepsTheCodesInOrder) {
    const auto control = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(S_OK, control->RequestShutdown(E_ABORT, nullptr));
    EXPECT_EQ(S_OK, control->RequestShutdown(S_OK, nullptr));
    EXPECT_EQ((std::vector<HRESULT>{E_ABORT, S_OK}), control->ShutdownCodes());
}

TEST_F(PipelineControlTest, AnErrorInfoIsABreachAndTheCodeIsKept) {
    const auto control = MakeObject<PipelineControl>(Context());
    int place = 0;
    EXPECT_EQ(E_INVALIDARG, control->RequestShutdown(E_ABORT, reinterpret_cast<IImgErrorInfo*>(&place)));
    EXPECT_EQ(std::vector<HRESULT>{E_ABORT}, control->ShutdownCodes());
    EXPECT_EQ(Lines{"RequestShutdown was called with an error info object"}, Breaches());
}

TEST_F(PipelineControlTest, CountsFilterFinished) {
    const auto control = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(0U, control->FinishedCount());
    EXPECT_EQ(S_OK, control->FilterFinished());
    EXPECT_EQ(S_OK, control->FilterFinished());
    EXPECT_EQ(2U, control->FinishedCount());
}

TEST_F(PipelineControlTest, FailsAsPlanned) {
    Behaviour behaviour = Failing("RequestShutdown", E_HANDLE);
    behaviour.faults.push_back({"FilterFinished", "", 1, E_UNEXPECTED, false});
    Use(behaviour);
    const auto control = MakeObject<PipelineControl>(Context());
    EXPECT_EQ(E_HANDLE, control->RequestShutdown(E_ABORT, nullptr));
    EXPECT_EQ(E_UNEXPECTED, control->FilterFinished());
}

}  // namespace
}  // namespace devkit::pipeline
