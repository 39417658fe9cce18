#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <random>
#include <thread>
#include <utility>

#include "devkit/pipeline/runcontext.h"
#include "endurance.h"
#include "faultedjob.h"

// ShutdownOperation may come at any moment of StartOperation.

namespace systemtest {
namespace {

using devkit::pipeline::AfterCancel;
using devkit::pipeline::FilterModule;
using devkit::pipeline::FilterRun;
using devkit::pipeline::FilterSource;
using devkit::pipeline::kJobCancelled;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;
using platform::ComPtr;
using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

// How the pipeline calls ShutdownOperation.
enum class Way { Once, Twice, FromTwoThreads };

struct Stop {
    Way way = Way::Once;
    Microseconds delay{0};         // from the begin of StartOperation to the wish to cancel
    std::function<void()> cancel;  // says the wish
    // When it was said, when ShutdownOperation came, and when StartOperation returned.
    std::atomic<Clock::rep> wished = 0;
    std::atomic<Clock::rep> called = 0;
    std::atomic<Clock::rep> ended = 0;
};

Clock::rep Now() { return Clock::now().time_since_epoch().count(); }

// Stands before the filter: has the job cancelled while StartOperation runs, and passes the one
// ShutdownOperation that then comes on in the wanted way.
class StoppedFilter final : public platform::ComIdentity<platform::ReferenceCount, IPrintPipelineFilter> {
  public:
    StoppedFilter(ComPtr<IPrintPipelineFilter> filter, Stop& stop)
        : m_filter(std::move(filter)), m_stop(stop) {}

    HRESULT STDMETHODCALLTYPE InitializeFilter(IInterFilterCommunicator* pCommunicator,
                                               IPrintPipelinePropertyBag* pBag,
                                               IPrintPipelineManagerControl* pControl) override {
        return m_filter->InitializeFilter(pCommunicator, pBag, pControl);
    }
    HRESULT STDMETHODCALLTYPE StartOperation() override {
        std::jthread canceller([this, end = Clock::now() + m_stop.delay] {
            while (Clock::now() < end) std::this_thread::yield();
            m_stop.wished = Now();
            m_stop.cancel();
        });
        const HRESULT result = m_filter->StartOperation();
        m_stop.ended = Now();
        return result;
    }
    HRESULT STDMETHODCALLTYPE ShutdownOperation() override {
        m_stop.called = Now();
        HRESULT second = S_OK;
        std::jthread other;
        if (m_stop.way == Way::FromTwoThreads)
            other = std::jthread([&] { second = m_filter->ShutdownOperation(); });
        const HRESULT first = m_filter->ShutdownOperation();
        if (other.joinable()) other.join();
        if (m_stop.way == Way::Twice) second = m_filter->ShutdownOperation();
        return FAILED(first) ? first : second;
    }

  private:
    const ComPtr<IPrintPipelineFilter> m_filter;
    Stop& m_stop;
};

class StoppedSource final : public FilterSource {
  public:
    StoppedSource(std::shared_ptr<FilterModule> module, Stop& stop)
        : m_module(std::move(module)), m_stop(stop) {}

    ComPtr<IPrintPipelineFilter> CreateFilter() override {
        return ComPtr<IPrintPipelineFilter>::Adopt(new StoppedFilter(m_module->CreateFilter(), m_stop));
    }
    HRESULT CanUnloadNow() override { return m_module->CanUnloadNow(); }
    std::size_t ThreadsLeft() override { return m_module->ThreadsLeft(); }

  private:
    const std::shared_ptr<FilterModule> m_module;
    Stop& m_stop;
};

class ShutdownMomentsTest : public FaultedJobTest {
  protected:
    static constexpr unsigned kSeed = 1;

    // Those that come to a good end by themselves, longer.
    static std::vector<Job> LongJobs() {
        constexpr std::size_t kPages = 20;
        std::vector<Job> jobs;
        for (const char* const name : {"passing", "merging", "turning", "resizing"}) {
            const Job& job = JobNamed(name);
            jobs.push_back(
                {job.name + " 20 pages", job.device,
                 std::make_shared<const devkit::pipeline::JobInput>(Repeated(*job.input, kPages))});
        }
        return jobs;
    }

    // How long StartOperation takes when nobody stops it.
    static Microseconds DurationOf(const Job& job) {
        Microseconds shortest{1e6};
        for (int time = 0; time < 3; ++time) {
            const RunOutcome outcome = RunJob(job, OptionsOf(job));
            EXPECT_EQ(GoodResult(job), ResultOf(outcome));
            shortest = std::min<Microseconds>(shortest, outcome.times.end - outcome.times.begin);
        }
        return shortest;
    }

    static void ExpectStopped(const Job& job, const JobResult& result, const RunOutcome& outcome, Way way) {
        ExpectNothingChanged(outcome);
        // The job was over before the wish was heard.
        if (!outcome.cancelled) {
            EXPECT_EQ(GoodResult(job), result);
            return;
        }
        EXPECT_EQ(S_OK, outcome.shutdownOperation);
        EXPECT_EQ(way == Way::Once ? 1u : 2u, outcome.finishedCount);
        EXPECT_TRUE(result.result == S_OK || result.result == kJobCancelled)
            << std::hex << static_cast<unsigned long>(result.result);
        EXPECT_EQ(FAILED(result.result) ? std::vector<HRESULT>{kJobCancelled} : std::vector<HRESULT>{},
                  result.shutdownCodes);
        // What was sent is the begin of what is sent else, each part of it whole.
        const std::vector<std::string>& all = GoodResult(job).sent;
        ASSERT_LE(result.sent.size(), all.size());
        EXPECT_TRUE(std::equal(result.sent.begin(), result.sent.end(), all.begin()));
    }
};

TEST_F(ShutdownMomentsTest, WheneverItComesTheOperationEndsWithADocumentedCode) {
    const unsigned moments = IsLong() ? 10000 : 200;
    std::vector<Microseconds> durations;
    const std::vector<Job> jobs = LongJobs();
    for (const Job& job : jobs) durations.push_back(DurationOf(job));
    std::mt19937 random(kSeed);
    std::vector<double> waits;
    Microseconds delivery{0};  // of the wish, the last time
    unsigned refused = 0;
    for (unsigned moment = 0; moment < moments; ++moment) {
        const std::size_t number = moment % jobs.size();
        const Job& job = jobs[number];
        Stop stop;
        stop.way = static_cast<Way>(moment / jobs.size() % 3);
        // A little longer, so that some come when the work is done.
        const double part = random() / static_cast<double>(std::mt19937::max()) * 1.1;
        stop.delay = std::max(durations[number] * part - delivery, Microseconds(0));
        RunOptions options = OptionsOf(job);
        options.behaviour.afterCancel = static_cast<AfterCancel>(moment / jobs.size() / 3 % 3);
        FilterRun run(std::make_shared<StoppedSource>(Filter(), stop), job.input, std::move(options));
        stop.cancel = [&run] { run.Cancel(); };
        const RunOutcome outcome = run.Run();
        const JobResult result = ResultOf(outcome);
        SCOPED_TRACE("moment " + std::to_string(moment) + ", " + job.name);
        ExpectStopped(job, result, outcome, stop.way);
        ASSERT_FALSE(HasFailure());
        if (outcome.cancelled) delivery = Clock::duration(stop.called - stop.wished);
        if (outcome.cancelled && stop.called < stop.ended)
            waits.push_back(Microseconds(Clock::duration(stop.ended - stop.called)).count());
        refused += FAILED(result.result) ? 1 : 0;
    }
    for (const Job& job : jobs) ExpectGoodResult(job);
    std::ranges::sort(waits);
    // On a busy machine most come late.
    ASSERT_LT(moments / 20, waits.size());
    std::printf(
        "ShutdownOperation at %u moments (seed %u), %zu of them while StartOperation was at it, which then "
        "ended within %.0f us in the median and %.0f us at worst; %u jobs ended with ERROR_CANCELLED\n",
        moments, kSeed, waits.size(), waits[waits.size() / 2], waits.back(), refused);
}

}  // namespace
}  // namespace systemtest
