#include "devkit/validate/validation.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <regex>
#include <set>

#include "devkit/common/fnvhash.h"
#include "devkit/common/threads.h"
#include "devkit/filterhost/exitstatus.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/validate/executors.h"
#include "devkit/validate/validationreport.h"

namespace devkit::validate {
namespace {

using Clock = std::chrono::steady_clock;
using filterhost::ValidateSettings;

std::optional<std::regex> Pattern(const char* option, const std::optional<std::string>& text) try {
    return text ? std::optional(std::regex(*text)) : std::nullopt;
} catch (const std::regex_error&) {
    throw filterhost::UsageError(std::string(option) + ": \"" + *text + "\" is no regular expression");
}

// A number of a test's own, so that what it chooses does not depend on which others are run.
std::uint64_t SeedOf(const Test& test, std::uint64_t seed) {
    common::FnvHash hash;
    hash.Take(seed);
    for (const char letter : test.name) hash.Take(static_cast<unsigned char>(letter));
    return hash.Value();
}

TestResult RunTest(const Test& test, Surroundings& surroundings, Executor& executor, std::uint64_t seed) {
    TestResult result;
    result.pTest = &test;
    const auto& leftOut = surroundings.Settings().leftOut;
    if (const auto found = leftOut.find(test.name); found != leftOut.end()) {
        result.verdict = Verdict::Skipped;
        result.reason = "left out: " + found->second;
        return result;
    }
    const Clock::time_point start = Clock::now();
    Trial trial(test, surroundings, executor, SeedOf(test, seed));
    try {
        test.run(trial);
    } catch (const Skipped& skipped) {
        if (trial.FailureCount() == 0) result.verdict = Verdict::Skipped;
        result.reason = skipped.what();
    } catch (const std::exception& error) {
        trial.Fail({{}, std::string("the test could not be run: ") + error.what(), {}, {}, {}});
    }
    if (trial.FailureCount() != 0) result.verdict = Verdict::Failed;
    result.failures = trial.Failures();
    result.failureCount = trial.FailureCount();
    result.cases = trial.Cases();
    result.seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return result;
}

// Threads that take test after test, each with processes of its own.
class TestRunner {
  public:
    TestRunner(const ValidateSettings& settings, const std::vector<const Test*>& tests,
               const std::vector<Document>& given, std::uint64_t seed, const TestSink& sink,
               TestTrace* pTrace)
        : m_settings(settings),
          m_tests(tests),
          m_seed(seed),
          m_sink(sink),
          m_pTrace(pTrace),
          m_surroundings(settings, given) {
        m_results.resize(tests.size());
    }

    bool Run() {
        const filterhost::Interrupt interrupt([this] { m_cancellation.Cancel(); });
        if (m_settings.inProcess) {
            std::atomic<std::size_t> current = 0;
            HereExecutor executor([&](const filterhost::Event& event, const RunResult&) {
                if (m_pTrace != nullptr) m_pTrace->Take(current, event);
            });
            TakeTests([&](std::size_t row) -> Executor& {
                current = row;
                return executor;
            });
        } else {
            RunInChildren();
        }
        if (m_failure) std::rethrow_exception(m_failure);
        return !m_cancellation.IsCancelled();
    }

  private:
    void RunInChildren() {
        common::RunInThreads(m_settings.parallel, m_tests.size(), [this] {
            std::unique_ptr<ChildExecutor> executor;
            TakeTests([&](std::size_t row) -> Executor& {
                executor = std::make_unique<ChildExecutor>(
                    m_settings.timeout, m_cancellation,
                    [this, row](const filterhost::Event& event, const RunResult&) {
                        if (m_pTrace != nullptr) m_pTrace->Take(row, event);
                    });
                return *executor;
            });
        });
    }

    // `executorOfTest` is given the test's row of the trace.
    void TakeTests(const std::function<Executor&(std::size_t row)>& executorOfTest) {
        while (const std::optional<std::size_t> number = Next()) {
            const Test& test = *m_tests[*number];
            const std::size_t row = m_pTrace == nullptr ? 0 : m_pTrace->Begin(std::string(test.name));
            TestResult result = RunTest(test, m_surroundings, executorOfTest(row), m_seed);
            if (m_pTrace != nullptr) m_pTrace->End(row);
            const std::lock_guard guard(m_lock);
            // What an interrupted run came to says nothing of the filter.
            if (m_cancellation.IsCancelled()) return;
            m_results[*number] = std::move(result);
            GiveResults();
        }
    }

    std::optional<std::size_t> Next() {
        const std::lock_guard guard(m_lock);
        if (m_cancellation.IsCancelled() || m_failure || m_next == m_tests.size()) return std::nullopt;
        return m_next++;
    }

    // Those whose turn it is. The lock is held.
    void GiveResults() {
        try {
            for (; m_given < m_results.size() && m_results[m_given]; ++m_given) m_sink(*m_results[m_given]);
        } catch (...) {
            m_failure = std::current_exception();
        }
    }

    const ValidateSettings& m_settings;
    const std::vector<const Test*>& m_tests;
    const std::uint64_t m_seed;
    const TestSink& m_sink;
    TestTrace* const m_pTrace;
    Surroundings m_surroundings;
    Cancellation m_cancellation;
    std::mutex m_lock;
    std::size_t m_next = 0;
    std::size_t m_given = 0;
    std::vector<std::optional<TestResult>> m_results;
    std::exception_ptr m_failure;  // of the sink
};

}  // namespace

std::vector<const Test*> Selected(const ValidateSettings& settings) {
    const std::optional<std::regex> include = Pattern("--include", settings.include);
    const std::optional<std::regex> exclude = Pattern("--exclude", settings.exclude);
    const auto matches = [](const Test& test, const std::regex& pattern) {
        return std::regex_search(test.name.begin(), test.name.end(), pattern);
    };
    std::optional<std::set<std::string, std::less<>>> failed;
    if (settings.onlyFailed) failed = ReadFailed(*settings.json);
    std::vector<const Test*> selected;
    for (const Test& test : Battery()) {
        if (test.level > settings.level) continue;
        if (include && !matches(test, *include)) continue;
        if (exclude && matches(test, *exclude)) continue;
        if (failed && !failed->contains(test.name)) continue;
        selected.push_back(&test);
    }
    return selected;
}

bool RunTests(const ValidateSettings& settings, const std::vector<const Test*>& tests,
              const std::vector<Document>& given, std::uint64_t seed, const TestSink& sink,
              TestTrace* pTrace) {
    return TestRunner(settings, tests, given, seed, sink, pTrace).Run();
}

}  // namespace devkit::validate
