#include <algorithm>

#include "filtertest.h"

namespace systemtest {
namespace {

using devkit::pipeline::Fault;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;

class FaultsTest : public FilterTest {};

RunOptions With(RunOptions options, Fault fault) {
    options.behaviour.faults.push_back(std::move(fault));
    return options;
}

TEST_F(FaultsTest, WithoutAFaultTheJobComesThroughWhole) {
    Configure();
    const RunOutcome outcome = Run(Options());
    EXPECT_EQ(S_OK, outcome.result);
    EXPECT_TRUE(outcome.IsWhole());
    EXPECT_TRUE(outcome.shutdownCodes.empty());
    ExpectNothingLeft(outcome);
}

TEST_F(FaultsTest, AMissingPropertyFailsTheJobWithThePropertyBagsCodeBeforeAnyPartIsRead) {
    for (const char* name : {"PerUserPrintTicket", "PrinterName", "UserSecurityToken"}) {
        SCOPED_TRACE(name);
        Configure();
        const RunOutcome outcome = Run(With(Options(), {"IPrintPipelinePropertyBag::GetProperty", name, 1,
                                                        HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), false}));
        ExpectFailure(outcome, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
        EXPECT_TRUE(outcome.parts.empty());
        EXPECT_TRUE(outcome.lastPart.empty());
    }
}

TEST_F(FaultsTest, AMissingDriverPropertyBagIsNoFailure) {
    Configure();
    RunOptions options = Options();
    options.properties.driverValues.reset();
    const RunOutcome outcome = Run(std::move(options));
    EXPECT_EQ(S_OK, outcome.result);
    ExpectNothingLeft(outcome);
}

TEST_F(FaultsTest, AProviderThatCannotBeOpenedFailsTheJobWithItsCode) {
    const std::pair<const char*, HRESULT> faults[] = {
        {"fault=open-denied", E_ACCESSDENIED},
        {"fault=open-gone", HRESULT_FROM_WIN32(ERROR_INVALID_PRINTER_NAME)},
        {"fault=open-rpc", HRESULT_FROM_WIN32(RPC_S_SERVER_UNAVAILABLE)}};
    for (const auto& [fault, hr] : faults) {
        SCOPED_TRACE(fault);
        Configure({fault});
        ExpectFailure(Run(Options()), hr);
    }
}

TEST_F(FaultsTest, AMergeThatFailsFailsTheJobWithItsCodeAtEveryScope) {
    const std::pair<const char*, HRESULT> faults[] = {
        {"merge-refuse-base", static_cast<HRESULT>(0x80040003)},
        {"merge-refuse-delta", static_cast<HRESULT>(0x80040005)},
        {"merge-fail", E_FAIL},
        {"merge-oom", E_OUTOFMEMORY}};
    for (const auto& [fault, hr] : faults) {
        for (const char* scope : {"job", "document", "page"}) {
            SCOPED_TRACE(std::string(fault) + " at " + scope);
            Configure({"fault=" + std::string(fault) + "@1:" + scope});
            ExpectFailure(Run(Options()), hr);
        }
    }
}

TEST_F(FaultsTest, AResultThatIsNoTicketFailsTheJobAndLeavesNothing) {
    for (const char* fault : {"out-empty", "out-truncated", "out-notxml"}) {
        SCOPED_TRACE(fault);
        Configure({"fault=" + std::string(fault)});
        const RunOutcome outcome = Run(Options());
        EXPECT_TRUE(FAILED(outcome.result));
        ExpectFailure(outcome, outcome.result);
    }
}

TEST_F(FaultsTest, SuccessCodesOfTheMergeAreAllSuccesses) {
    for (const char* fault : {"s-ok", "conflict", "conflict-silent", "out-rewound", "bstr-on-success"}) {
        SCOPED_TRACE(fault);
        Configure({"fault=" + std::string(fault)});
        const RunOutcome outcome = Run(Options());
        EXPECT_EQ(S_OK, outcome.result);
        ExpectNothingLeft(outcome);
    }
}

TEST_F(FaultsTest, EachSendThatFailsFailsTheJobWithItsCode) {
    for (const char* method :
         {"SendXpsDocument", "SendFixedDocumentSequence", "SendFixedDocument", "SendFixedPage"}) {
        SCOPED_TRACE(method);
        Configure();
        ExpectFailure(
            Run(With(Options(), {std::string("IXpsDocumentConsumer::") + method, "", 1, E_ABORT, false})),
            E_ABORT);
    }
}

TEST_F(FaultsTest, GetXpsPartFailingAtPartNFailsTheJobAndSendsWhatCameBefore) {
    // The document, the sequence, three documents and ten pages, and the question that finds no more.
    constexpr unsigned kQuestions = 16;
    for (unsigned nth = 1; nth <= kQuestions; ++nth) {
        SCOPED_TRACE(nth);
        Configure();
        const RunOutcome outcome =
            Run(With(Options(), {"IXpsDocumentProvider::GetXpsPart", "", nth, E_ACCESSDENIED, false}));
        ExpectFailure(outcome, E_ACCESSDENIED);
        EXPECT_EQ(nth - 1, outcome.parts.size());
    }
}

// Fails the nth of all calls that the filter makes to the pipeline, for every n until none fails.
TEST_F(FaultsTest, WhateverCallFailsTheJobEndsCleanly) {
    constexpr HRESULT kCode = static_cast<HRESULT>(0x80070017);
    for (unsigned nth = 1;; ++nth) {
        ASSERT_LT(nth, 1000u);
        SCOPED_TRACE("call " + std::to_string(nth));
        Configure({}, "longedge");
        RunOptions options = With(Options(), {"", "", nth, kCode, false});
        options.behaviour.keepCalls = true;
        const RunOutcome outcome = Run(std::move(options));
        if (!outcome.unstruckFaults.empty()) {
            EXPECT_EQ(S_OK, outcome.result);
            EXPECT_GT(nth, 50u);
            break;
        }
        ASSERT_FALSE(outcome.hung);
        // The closed list: the fault's own code, a stream failure seen through the XML reader, writer or the
        // DOM, or a success where the call that failed may fail.
        EXPECT_TRUE(outcome.result == kCode || outcome.result == E_FAIL || outcome.result == S_OK)
            << std::hex << outcome.result;
        if (FAILED(outcome.result)) {
            EXPECT_LE(outcome.shutdownCodes.size(), 1u);
        }
        for (const std::string& breach : outcome.breaches) {
            EXPECT_TRUE(breach.find("never released") == std::string::npos &&
                        breach.find("DllCanUnloadNow") == std::string::npos &&
                        breach.find("still referenced") == std::string::npos)
                << breach << " after " << outcome.calls.back();
        }
    }
}

}  // namespace
}  // namespace systemtest
