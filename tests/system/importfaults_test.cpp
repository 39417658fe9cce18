#include "devkit/common/hresult.h"
#include "importfaultstest.h"

namespace systemtest {
namespace {

using devkit::common::HexOf;
using tests::Import;
using tests::kImportFailure;

constexpr HRESULT kDenied = static_cast<HRESULT>(0x80070005);

TEST_F(ImportFaultsTest, WithoutMemoryThereIsNoFilterOrTheJobEndsWithEOutOfMemory) {
    FailCalls(Import::OperatorNew, [](const Job& job, const Attempt& attempt) {
        // A stable sort does without the buffer that would make it faster.
        if (!attempt.notMade && !attempt.isForGood && attempt.result == GoodResult(job)) return;
        if (!attempt.notMade) return ExpectEnded(job, attempt, E_OUTOFMEMORY);
        // Without a class factory the host asks for the filter itself, which this module does not give out.
        const bool isFactory = attempt.nth == 1 && !attempt.isForGood;
        EXPECT_EQ(isFactory ? E_NOINTERFACE : E_OUTOFMEMORY, *attempt.notMade) << HexOf(*attempt.notMade);
    });
}

TEST_F(ImportFaultsTest, WithoutMemoryForATextTheJobEndsWithEOutOfMemory) {
    FailCalls(Import::SysAllocStringLen, [](const Job& job, const Attempt& attempt) {
        // The first text is the name under which the driver has its prefix.
        if (attempt.nth == 1 && !attempt.isForGood) {
            EXPECT_EQ(ResultWithoutPrefix(job), attempt.result);
        } else {
            ExpectEnded(job, attempt, E_OUTOFMEMORY);
        }
    });
}

TEST_F(ImportFaultsTest, AnApartmentThatCannotBeEnteredIsWhatTheJobReturnsBeforeAnythingBegins) {
    FailCalls(Import::CoInitializeEx, [](const Job& job, const Attempt& attempt) {
        EXPECT_EQ(EndedEarly(GoodResult(job), 0, kImportFailure, {}), attempt.result);
    });
}

TEST_F(ImportFaultsTest, AnObjectThatCannotBeMadeEndsTheJobWithItsCode) {
    for (const Import import : {Import::CoCreateInstance, Import::CreateStreamOnHGlobal}) {
        FailCalls(import,
                  [](const Job& job, const Attempt& attempt) { ExpectEnded(job, attempt, kImportFailure); });
    }
}

TEST_F(ImportFaultsTest, AProviderCallThatFailsEndsTheJobWithItsCodeAndAFailingCloseDoesNot) {
    for (const Import import : {Import::PTOpenProvider, Import::PTMergeAndValidatePrintTicket}) {
        FailCalls(import,
                  [](const Job& job, const Attempt& attempt) { ExpectEnded(job, attempt, kImportFailure); });
    }
    FailCalls(Import::PTCloseProvider,
              [](const Job& job, const Attempt& attempt) { EXPECT_EQ(GoodResult(job), attempt.result); });
}

TEST_F(ImportFaultsTest, WithoutTheUsersTokenTheJobEndsAndNoProviderIsCalled) {
    FailCalls(Import::SetThreadTokenTake, [](const Job& job, const Attempt& attempt) {
        ExpectEnded(job, attempt, kDenied);
        // What is called without the token is the end of a provider that was opened with it.
        const std::size_t closing = attempt.nth == 1 ? 0 : 1;
        EXPECT_EQ(attempt.nth - 1 + closing, Provider().Report().calls.size());
    });
}

TEST_F(ImportFaultsTest, ATokenThatCannotBeGivenBackChangesNoResult) {
    FailCalls(Import::SetThreadTokenGiveBack, [](const Job& job, Attempt& attempt) {
        EXPECT_EQ(GoodResult(job), attempt.result);
        // The next call that takes the token gives it back; behind the last one nothing does.
        const bool isKept = attempt.isForGood || attempt.nth == attempt.calls;
        std::vector<std::string> kept;
        if (isKept) kept.emplace_back("StartOperation left its thread impersonating");
        EXPECT_EQ(kept, attempt.outcome.breaches);
        attempt.outcome.breaches.clear();
    });
}

// What was sent without the tickets of the pages.
JobResult WithoutTickets(JobResult result) {
    for (std::string& sent : result.sent) sent.resize(sent.find("\nticket "));
    return result;
}

// The adapters of the pipeline's streams say when they were used.
TEST_F(ImportFaultsTest, AStreamThatCannotTellTheTimeIsOneThatCannotBeReadOrWritten) {
    FailCalls(Import::CoFileTimeNow, [](const Job& job, const Attempt& attempt) {
        // What a document says of its own saving is not looked at: a page may have lost its new ticket.
        const bool writesTickets = job.name == "turning" || job.name == "resizing";
        const JobResult good = writesTickets ? WithoutTickets(GoodResult(job)) : GoodResult(job);
        const JobResult result = writesTickets ? WithoutTickets(attempt.result) : attempt.result;
        if (writesTickets && result == good) return;
        // A stream that cannot be wrapped for a merge counts as one without memory.
        EXPECT_TRUE(result.result == E_OUTOFMEMORY || result.result == kImportFailure)
            << HexOf(result.result);
        const std::size_t sent = std::min(result.sent.size(), good.sent.size());
        EXPECT_EQ(EndedEarly(good, sent, result.result, {result.result}), result);
    });
}

// What GDI+ says of an operation on a matrix is kept and not looked at, but for the last.
TEST_F(ImportFaultsTest, AMatrixThatCannotBeMadeOrReadEndsTheJobWithEFail) {
    FailCalls(Import::GdipCreateMatrix,
              [](const Job& job, const Attempt& attempt) { ExpectEnded(job, attempt, E_FAIL); });
    FailCalls(Import::GdipGetMatrixElements, [](const Job& job, const Attempt& attempt) {
        // Each page reads its matrix twice, and writes what the second time gives.
        const bool isWritten = attempt.nth % 2 == 0 || attempt.isForGood;
        if (isWritten) return ExpectEnded(job, attempt, E_FAIL);
        EXPECT_EQ(GoodResult(job).result, attempt.result.result);
        EXPECT_EQ(GoodResult(job).sent.size(), attempt.result.sent.size());
    });
}

TEST_F(ImportFaultsTest, AnOperationOnAMatrixThatFailsEndsNoJob) {
    for (const Import import :
         {Import::GdiplusStartup, Import::GdipSetMatrixElements, Import::GdipRotateMatrix,
          Import::GdipScaleMatrix, Import::GdipTransformMatrixPoints}) {
        FailCalls(import, [](const Job& job, const Attempt& attempt) {
            EXPECT_EQ(GoodResult(job).result, attempt.result.result) << HexOf(attempt.result.result);
            EXPECT_EQ(GoodResult(job).shutdownCodes, attempt.result.shutdownCodes);
            EXPECT_EQ(GoodResult(job).sent.size(), attempt.result.sent.size());
        });
    }
}

}  // namespace
}  // namespace systemtest
