#include <future>
#include <regex>
#include <set>
#include <utility>

#include "devkit/pipeline/part.h"
#include "endurance.h"
#include "faultedjob.h"
#include "gate.h"

// Several filters of the module at once, each in a job of its own.

namespace systemtest {
namespace {

using devkit::pipeline::FilterModule;
using devkit::pipeline::FilterRun;
using devkit::pipeline::FilterSource;
using devkit::pipeline::RunOptions;
using devkit::pipeline::RunOutcome;
using devkit::pipeline::SentPart;
using platform::ComPtr;

// The module for one of several runs at once: whether it may be unloaded, and whose threads are in it, is
// then not to be told from one of them.
class SharedModule final : public FilterSource {
  public:
    explicit SharedModule(std::shared_ptr<FilterModule> module) : m_module(std::move(module)) {}

    ComPtr<IPrintPipelineFilter> CreateFilter() override { return m_module->CreateFilter(); }
    HRESULT CanUnloadNow() override { return S_OK; }

  private:
    const std::shared_ptr<FilterModule> m_module;
};

// The numbers in the names of the tickets that the filter made.
std::vector<std::string> TicketNumbers(const RunOutcome& outcome) {
    static const std::regex pattern("pagevalidator_([0-9]+)_");
    std::vector<std::string> numbers;
    for (const SentPart& sent : outcome.parts) {
        const std::string title =
            sent.part != nullptr && sent.part->ticket != nullptr ? sent.part->ticket->Title() : "";
        if (std::smatch match; std::regex_search(title, match, pattern)) numbers.push_back(match[1]);
    }
    return numbers;
}

class ParallelTest : public FaultedJobTest {
  protected:
    static constexpr std::size_t kThreads = 8;

    // The jobs that the device prints, in turn, in each thread another one first.
    static void ExpectSameAsAlone(const std::string& device) {
        const std::size_t rounds = IsLong() ? 200 : 8;
        std::vector<const Job*> jobs;
        for (const Job& job : Jobs()) {
            if (job.device == device) jobs.push_back(&job);
        }
        for (const Job* const pJob : jobs) static_cast<void>(GoodResult(*pJob));

        // The options, and with them the provider's settings, are there before the first begins.
        std::vector<std::vector<std::pair<const Job*, RunOptions>>> works(kThreads);
        for (std::size_t thread = 0; thread < kThreads; ++thread) {
            for (std::size_t round = 0; round < rounds; ++round) {
                const Job& job = *jobs[(thread + round) % jobs.size()];
                works[thread].emplace_back(&job, OptionsOf(job));
            }
        }
        // Its account of hundreds of jobs would take longer to read than the jobs take.
        ConfigureWithoutLog(device);
        tests::Gate start(kThreads);
        std::vector<std::future<std::vector<RunOutcome>>> results;
        for (auto& work : works) {
            results.push_back(std::async(std::launch::async, [&start, &work] {
                start.Pass();
                std::vector<RunOutcome> outcomes;
                for (auto& [pJob, options] : work) {
                    const auto source = std::make_shared<SharedModule>(Filter());
                    outcomes.push_back(FilterRun(source, pJob->input, std::move(options)).Run());
                }
                return outcomes;
            }));
        }
        std::set<std::string> numbers;
        std::size_t tickets = 0;
        // All have ended before any is looked at.
        std::vector<std::vector<RunOutcome>> ended;
        for (auto& result : results) ended.push_back(result.get());
        for (std::size_t thread = 0; thread < kThreads; ++thread) {
            const std::vector<RunOutcome>& outcomes = ended[thread];
            for (std::size_t round = 0; round < rounds; ++round) {
                EXPECT_EQ(GoodResult(*works[thread][round].first), ResultOf(outcomes[round]))
                    << works[thread][round].first->name;
                EXPECT_EQ(std::vector<std::string>{}, outcomes[round].breaches);
                const std::vector<std::string> made = TicketNumbers(outcomes[round]);
                tickets += made.size();
                numbers.insert(made.begin(), made.end());
            }
        }
        EXPECT_EQ(tickets, numbers.size());
        EXPECT_EQ(device == "longedge", tickets > 0);
        EXPECT_EQ(S_OK, Filter()->CanUnloadNow());
        ExpectNothingChanged(ended.back().back());
    }
};

TEST_F(ParallelTest, EightFiltersSendWhatEachSendsAlone) { ExpectSameAsAlone("simprinter"); }

TEST_F(ParallelTest, EightFiltersThatChangePagesNumberTheirTicketsDifferently) {
    ExpectSameAsAlone("longedge");
}

}  // namespace
}  // namespace systemtest
