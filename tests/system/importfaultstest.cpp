#include "importfaultstest.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <set>
#include <utility>

#include "devkit/common/hresult.h"
#include "devkit/common/processusage.h"
#include "endurance.h"

namespace systemtest {

using devkit::common::HexOf;
using devkit::common::ProcessUsage;
using devkit::pipeline::FilterError;
using devkit::pipeline::RunOptions;
using tests::Import;
using tests::ImportFaults;

namespace {

// Of what is called very often each way to the call is taken once, of the rest each call fails.
bool IsOften(Import import) {
    return import == Import::OperatorNew || import == Import::SysAllocStringLen ||
           import == Import::CoFileTimeNow || import == Import::Dom;
}

// How far back two ways are looked at to tell them apart; in the long form to their beginning.
std::size_t PlacesOfAWay(bool isForGood) {
    constexpr std::size_t kAll = 48;
    if (std::getenv("PAGEVALIDATE_LONG") != nullptr) return kAll;
    return isForGood ? 3 : 5;
}

// Counts what a job has sent so far.
class SentCount final : public devkit::pipeline::RunObserver {
  public:
    void PartSent(const devkit::pipeline::SentPart&) override { ++m_parts; }
    [[nodiscard]] std::size_t Parts() const { return m_parts; }

  private:
    std::atomic<std::size_t> m_parts = 0;
};

}  // namespace

void ImportFaultsTest::SetUp() {
    for (const Job& job : Jobs()) {
        static_cast<void>(GoodResult(job));
        static_cast<void>(ResultWithoutPrefix(job));
    }
    KeepSystemLoaded(FilterHandle());
}

void ImportFaultsTest::TearDown() {
    if (FilterHandle() == nullptr) LoadFilter();
}

void ImportFaultsTest::FailCalls(Import import, const Check& check, const std::string& what) {
    const std::size_t handles = ProcessUsage::Now().handles;
    for (const bool isForGood : {false, true}) {
        std::set<std::uint64_t> known;
        for (const Job& job : Jobs()) {
            const std::string kind =
                tests::NameOf(import) + what + (isForGood ? " failing for good" : " failing once");
            SCOPED_TRACE(kind + ", " + job.name);
            std::vector<std::uint64_t> ways;
            ASSERT_NO_FATAL_FAILURE(RecordWays(job, import, isForGood, ways));
            std::size_t tried = 0;
            for (std::size_t i = 0; i < ways.size(); ++i) {
                if (!known.insert(ways[i]).second && IsOften(import)) continue;
                Attempt attempt;
                attempt.calls = ways.size();
                attempt.nth = static_cast<unsigned>(i + 1);
                attempt.isForGood = isForGood;
                SCOPED_TRACE("call " + std::to_string(attempt.nth) + " of " + std::to_string(ways.size()));
                ASSERT_NO_FATAL_FAILURE(Try(job, import, attempt, check));
                ++tried;
            }
            ExpectTried(kind, job, tried);
        }
    }
    EXPECT_GE(handles + kHandlesOfTheSystem, ProcessUsage::Now().handles);
}

void ImportFaultsTest::ExpectEnded(const Job& job, const Attempt& attempt, HRESULT code) {
    ASSERT_FALSE(attempt.notMade) << HexOf(*attempt.notMade);
    const JobResult& good = GoodResult(job);
    const std::size_t sent = std::min(attempt.result.sent.size(), good.sent.size());
    EXPECT_EQ(EndedEarly(good, sent, code, {code}), attempt.result) << HexOf(attempt.result.result);
}

void ImportFaultsTest::Reload() {
    UnloadFilter();
    ASSERT_EQ(nullptr, FilterHandle()) << "the filter is still loaded";
    LoadFilter();
}

void ImportFaultsTest::RecordWays(const Job& job, Import import, bool isForGood,
                                  std::vector<std::uint64_t>& ways) {
    Reload();
    ImportFaults faults(FilterHandle());
    faults.RecordPaths(import, PlacesOfAWay(isForGood));
    ExpectGoodResult(job);
    ways = faults.Paths();
    UnloadFilter();
    ASSERT_EQ(nullptr, FilterHandle()) << "the filter is still loaded";
    EXPECT_EQ(std::vector<std::string>{}, faults.LeftOver());
}

void ImportFaultsTest::Try(const Job& job, Import import, Attempt& attempt, const Check& check) {
    Reload();
    ImportFaults faults(FilterHandle());
    RunOptions options = OptionsOf(job);
    const auto sent = std::make_shared<SentCount>();
    options.observer = sent;
    faults.Fail(import, attempt.nth, attempt.isForGood, [&] { attempt.sentBefore = sent->Parts(); });
    try {
        attempt.outcome = RunJob(job, std::move(options));
        attempt.result = ResultOf(attempt.outcome);
    } catch (const FilterError& error) {
        attempt.notMade = error.GetHresult();
    }
    EXPECT_TRUE(faults.HasFailed());
    attempt.name = faults.FailedCall();
    attempt.path = faults.FailedPath();
    faults.Fail(import, 0, false);
    check(job, attempt);
    if (!attempt.notMade) {
        EXPECT_EQ(S_OK, attempt.outcome.shutdownOperation.value_or(S_OK));
        ExpectNothingChanged(attempt.outcome);
        if (attempt.result.sent.size() != GoodResult(job).sent.size()) {
            EXPECT_EQ(attempt.sentBefore, attempt.result.sent.size()) << "something was sent behind it";
        }
    }
    ExpectGoodResult(job);
    UnloadFilter();
    ASSERT_EQ(nullptr, FilterHandle()) << "the filter is still loaded";
    EXPECT_EQ(std::vector<std::string>{}, faults.LeftOver());
}

}  // namespace systemtest
