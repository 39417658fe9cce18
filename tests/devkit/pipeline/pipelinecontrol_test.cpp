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

class ProgressReportTest : public PipelineTest {};

TEST_F(ProgressReportTest, CountsEachKind) {
    const auto report = MakeObject<ProgressReport>(Context());
    EXPECT_EQ(S_OK, report->ReportProgress(XpsJob_DocumentSequenceAdded));
    EXPECT_EQ(S_OK, report->ReportProgress(XpsJob_FixedDocumentAdded));
    EXPECT_EQ(S_OK, report->ReportProgress(XpsJob_FixedPageAdded));
    EXPECT_EQ(S_OK, report->ReportProgress(XpsJob_FixedDocumentAdded));
    EXPECT_EQ(S_OK, report->ReportProgress(XpsJob_FixedPageAdded));
    EXPECT_EQ(S_OK, report->ReportProgress(XpsJob_FixedPageAdded));
    EXPECT_EQ(E_INVALIDARG, report->ReportProgress(static_cast<EXpsJobConsumption>(3)));
    EXPECT_EQ((ProgressCounts{1, 2, 3}), report->Counts());
}

TEST_F(ProgressReportTest, AnswersTheFailureThatIsPlanned) {
    Use(Failing("ReportProgress", E_ABORT));
    const auto report = MakeObject<ProgressReport>(Context());
    EXPECT_EQ(E_ABORT, report->ReportProgress(XpsJob_FixedPageAdded));
    EXPECT_EQ(ProgressCounts{}, report->Counts());
}

class PrintClassFactoryTest : public PipelineTest {};

TEST_F(PrintClassFactoryTest, RefusesEachClassAndTellsIt) {
    const auto factory = MakeObject<PrintClassFactory>(Context());
    void* object = factory.Get();
    EXPECT_EQ(E_NOINTERFACE, factory->GetPrintClassObject(L"Printer", __uuidof(IFixedPage), &object));
    EXPECT_EQ(nullptr, object);
    EXPECT_EQ(E_POINTER, factory->GetPrintClassObject(L"Printer", __uuidof(IFixedPage), nullptr));
    EXPECT_EQ(Lines{"print class {3D9F6448-7E95-4CB5-94FB-0180C2883A57}"}, Context()->MissingThings());
}

}  // namespace
}  // namespace devkit::pipeline
