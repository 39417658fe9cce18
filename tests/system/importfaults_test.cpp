#include "importfaults.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <optional>
#include <set>

#include "devkit/common/hresult.h"
#include "faultedjob.h"

namespace systemtest {
namespace {

using devkit::common::HexOf;
using devkit::pipeline::FilterError;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;
using tests::Import;
using tests::ImportFaults;
using tests::kImportFailure;

constexpr HRESULT kDenied = static_cast<HRESULT>(0x80070005);

// Of functions that are called very often each way to the call is taken once, of the others each call fails.
bool IsOften(Import import) {
    return import == Import::OperatorNew || import == Import::SysAllocStringLen ||
           import == Import::CoFileTimeNow;
}

// How far back two ways are looked at to tell them apart; in the long form to their beginning.
std::size_t PlacesOfAWay(bool isForGood) {
    constexpr std::size_t kAll = 48;
    if (std::getenv("PAGEVALIDATE_LONG") != nullptr) return kAll;
    return isForGood ? 3 : 4;
}

// What became of a job of which an imported function failed.
struct Attempt {
    std::size_t calls = 0;  // that the job makes when none fails
    unsigned nth = 0;       // that failed
    bool isForGood = false;
    bool isStruck = false;
    std::optional<HRESULT> notMade;  // why there was no filter
    RunOutcome outcome;
    JobResult result;
};

class ImportFaultsTest : public FaultedJobTest {
  protected:
    using Check = std::function<void(const Job& job, Attempt& attempt)>;

    void SetUp() override {
        for (const Job& job : Jobs()) {
            static_cast<void>(GoodResult(job));
            static_cast<void>(ResultWithoutPrefix(job));
        }
    }
    void TearDown() override {
        if (FilterHandle() == nullptr) LoadFilter();
    }

    // Fails the calls of each job, one by one, once and then for good, in a filter that has just been loaded,
    // so that what is made on first use is made then. After the check the job must give again what it gave at
    // first, and the filter, once unloaded, must have given everything back.
    static void FailCalls(Import import, const Check& check) {
        for (const bool isForGood : {false, true}) {
            std::set<std::uint64_t> known;
            for (const Job& job : Jobs()) {
                const std::string kind =
                    std::string(tests::NameOf(import)) + (isForGood ? " failing for good" : " failing once");
                SCOPED_TRACE(kind + ", " + job.name);
                std::vector<std::uint64_t> ways;
                ASSERT_NO_FATAL_FAILURE(RecordWays(job, import, isForGood, ways));
                std::size_t tried = 0;
                for (std::size_t i = 0; i < ways.size(); ++i) {
                    if (!known.insert(ways[i]).second && IsOften(import)) continue;
                    Attempt attempt{ways.size(), static_cast<unsigned>(i + 1), isForGood, false, {}, {}, {}};
                    SCOPED_TRACE("call " + std::to_string(attempt.nth) + " of " +
                                 std::to_string(ways.size()));
                    ASSERT_NO_FATAL_FAILURE(Try(job, import, attempt, check));
                    ++tried;
                }
                ExpectTried(kind, job, tried);
            }
        }
    }

    // The job ended with the code, which was reported once.
    static void ExpectEnded(const Job& job, const Attempt& attempt, HRESULT code) {
        ASSERT_FALSE(attempt.notMade) << HexOf(*attempt.notMade);
        const JobResult& good = GoodResult(job);
        const std::size_t sent = std::min(attempt.result.sent.size(), good.sent.size());
        EXPECT_EQ(EndedEarly(good, sent, code, {code}), attempt.result) << HexOf(attempt.result.result);
    }

  private:
    static void Reload() {
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle()) << "the filter is still loaded";
        LoadFilter();
    }

    static void RecordWays(const Job& job, Import import, bool isForGood, std::vector<std::uint64_t>& ways) {
        Reload();
        ImportFaults faults(FilterHandle());
        faults.RecordPaths(import, PlacesOfAWay(isForGood));
        ExpectGoodResult(job);
        ways = faults.Paths();
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle()) << "the filter is still loaded";
        EXPECT_EQ(std::vector<std::string>{}, faults.LeftOver());
    }

    static void Try(const Job& job, Import import, Attempt& attempt, const Check& check) {
        Reload();
        ImportFaults faults(FilterHandle());
        RunOptions options = OptionsOf(job);
        faults.Fail(import, attempt.nth, attempt.isForGood);
        try {
            attempt.outcome = RunJob(job, std::move(options));
            attempt.result = ResultOf(attempt.outcome);
        } catch (const FilterError& error) {
            attempt.notMade = error.GetHresult();
        }
        EXPECT_TRUE(faults.HasFailed());
        faults.Fail(import, 0, false);
        check(job, attempt);
        if (!attempt.notMade) {
            EXPECT_EQ(S_OK, attempt.outcome.shutdownOperation.value_or(S_OK));
            ExpectNothingChanged(attempt.outcome);
        }
        ExpectGoodResult(job);
        UnloadFilter();
        ASSERT_EQ(nullptr, FilterHandle()) << "the filter is still loaded";
        EXPECT_EQ(std::vector<std::string>{}, faults.LeftOver());
    }
};

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
