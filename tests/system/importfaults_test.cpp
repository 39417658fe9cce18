#include <set>

#include "curiousdom.h"
#include "devkit/common/hresult.h"
#include "importfaultstest.h"
#include "pagevalidatefilter/peimage.h"
#include "programfolder.h"

namespace systemtest {
namespace {

using devkit::common::HexOf;
using pagevalidatefilter::PeImage;
using tests::Import;
using tests::ImportFaults;
using tests::kImportFailure;

constexpr HRESULT kDenied = static_cast<HRESULT>(0x80070005);

TEST_F(ImportFaultsTest, WithoutMemoryThereIsNoFilterOrTheJobEndsWithEOutOfMemory) {
    // A stable sort does without the buffer that would make it faster; it alone asks with new (std::nothrow).
    std::set<std::vector<std::uintptr_t>> doneWithout;
    FailCalls(Import::OperatorNew, [&](const Job& job, const Attempt& attempt) {
        if (!attempt.notMade && !attempt.isForGood && attempt.result == GoodResult(job)) {
            constexpr std::ptrdiff_t kPlacesOfNew = 2;
            doneWithout.emplace(attempt.path.begin(), attempt.path.begin() + kPlacesOfNew);
            return;
        }
        if (!attempt.notMade) return ExpectEnded(job, attempt, E_OUTOFMEMORY);
        // Without a class factory the host asks for the filter itself, which this module does not give out.
        const bool isFactory = attempt.nth == 1 && !attempt.isForGood;
        EXPECT_EQ(isFactory ? E_NOINTERFACE : E_OUTOFMEMORY, *attempt.notMade) << HexOf(*attempt.notMade);
    });
    EXPECT_EQ(1u, doneWithout.size());
}

// The names of streams that nobody asks for, the printer's driver and capabilities, a value that the DOM
// gives typed, the sheet that is usual where nobody states one.
TEST_F(ImportFaultsTest, WhatNoJobCallsIsKnownByName) {
    for (const Import import :
         {Import::CoTaskMemAlloc, Import::GetPrinterDriverW, Import::PTGetPrintCapabilities,
          Import::VariantChangeTypeEx, Import::GetLocaleInfoW}) {
        FailCalls(import, [](const Job&, const Attempt& attempt) {
            ADD_FAILURE() << "it was called " << attempt.calls << " times";
        });
    }
}

// The part with its new ticket empty; the same where it has none.
std::string WithEmptyNewTicket(const std::string& sent) {
    const std::size_t ticket = sent.find("\nticket ");
    const bool isNew = sent.find("pagevalidator_N_", ticket) != std::string::npos;
    return isNew ? sent.substr(0, sent.find(": ", ticket) + 2) : sent;
}

TEST_F(ImportFaultsTest, AStreamWithoutMemoryForItsNameEndsTheJobOrLeavesANewTicketEmpty) {
    const CuriousDom dom;
    FailCalls(
        Import::CoTaskMemAlloc,
        [](const Job& job, const Attempt& attempt) {
            // What a document says of its own saving is not looked at.
            JobResult result = attempt.result;
            const JobResult& good = GoodResult(job);
            ASSERT_LE(result.sent.size(), good.sent.size());
            std::size_t lost = 0;
            for (std::size_t i = 0; i < result.sent.size(); ++i) {
                if (result.sent[i] == good.sent[i]) continue;
                EXPECT_EQ(WithEmptyNewTicket(good.sent[i]), result.sent[i]);
                result.sent[i] = good.sent[i];
                ++lost;
            }
            if (lost == 0) return ExpectEnded(job, attempt, E_OUTOFMEMORY);
            if (!attempt.isForGood) {
                EXPECT_EQ(1u, lost);
            }
            const bool isWhole = result.sent.size() == good.sent.size();
            EXPECT_TRUE(isWhole || attempt.isForGood);
            EXPECT_EQ(isWhole ? good : EndedEarly(good, result.sent.size(), E_OUTOFMEMORY, {E_OUTOFMEMORY}),
                      result);
        },
        " for the name of a stream");
    EXPECT_EQ((std::set<std::wstring>{L"PrintReadStream", L"PrintWriteStream"}), dom.Names());
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

TEST_F(ImportFaultsTest, EachFunctionOfTheSystemStandsUnderTheseTestsOrCannotFail) {
    const std::set<std::string> cannotFail = {"SysStringLen", "VariantInit"};
    // The compiler's runtime imports from these as well, and most of what there is.
    const std::set<std::string> ofRuntime = {"kernel32.dll", "msvcrt.dll", "ucrtbase.dll"};
    std::size_t looked = 0;
    const PeImage filter(tests::ProgramFolder() / "pagevalidatefilter.dll");
    for (const auto& [library, functions] : filter.Imports()) {
        if (ofRuntime.contains(library) || library.starts_with("api-ms-win-crt-")) continue;
        for (const std::string& function : functions) {
            EXPECT_NE(cannotFail.contains(function), ImportFaults::Replaces(function)) << function;
            ++looked;
        }
    }
    EXPECT_LT(20u, looked);
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
