#include "devkit/filterhost/supervisor.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "devkit/common/threads.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/hostedchild.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/filterhost/progress.h"
#include "devkit/filterhost/runevent.h"
#include "devkit/filterhost/tracefile.h"

namespace devkit::filterhost {
namespace {

class Supervisor {
  public:
    Supervisor(const RunSettings& settings, const ResultSink& sink)
        : m_settings(settings), m_sink(sink), m_progress(!settings.quiet) {
        m_results.resize(settings.jobs.size());
        if (settings.trace) m_trace.emplace(*settings.trace);
    }

    bool Run() {
        const Interrupt interrupt([this] { Cancel(); });
        common::RunInThreads(m_settings.parallel, m_settings.jobs.size(), [this] { TakeJobs(); });
        if (m_failure) std::rethrow_exception(m_failure);
        if (!m_refused) return !m_cancelled;
        if (m_refused->status == WrongUsage) throw UsageError(m_refused->text);
        throw std::runtime_error(m_refused->text);
    }

  private:
    void TakeJobs() try {
        while (const std::optional<std::size_t> number = NextJob()) {
            RunResult result = RunJob(*number);
            const std::lock_guard guard(m_lock);
            if (m_refused || m_failure) return;
            m_results[*number] = std::move(result);
            GiveResults();
        }
    } catch (...) {
        const std::lock_guard guard(m_lock);
        if (!m_failure) m_failure = std::current_exception();
    }

    std::optional<std::size_t> NextJob() {
        const std::lock_guard guard(m_lock);
        if (m_cancelled || m_refused || m_failure || m_nextJob == m_settings.jobs.size()) return std::nullopt;
        return m_nextJob++;
    }

    // Those whose turn it is. The lock is held.
    void GiveResults() {
        m_progress.Clear();
        try {
            for (; m_nextResult < m_results.size() && m_results[m_nextResult]; ++m_nextResult) {
                m_sink(*m_results[m_nextResult]);
                m_results[m_nextResult].reset();
            }
        } catch (...) {
            m_failure = std::current_exception();
        }
    }

    RunResult RunJob(std::size_t number) {
        const Job& job = m_settings.jobs[number];
        RunResult result;
        result.input = job.inputName;
        if (m_trace) m_trace->Name(number + 1, job.inputName);
        try {
            bool isCrashTold = false;
            HostedChild child(m_settings.timeout, [&](const Event& event, const RunResult& seen) {
                isCrashTold = isCrashTold || std::holds_alternative<events::Crashed>(event);
                Watch(event, number, seen);
            });
            const Registration registration(*this, child);
            static_cast<void>(child.Run({m_settings.host, job}, result));
            // An end that the child could not tell of.
            if (m_trace && result.crash && !isCrashTold)
                m_trace->Take(number + 1, events::Crashed{*result.crash});
        } catch (const std::system_error& error) {
            Apply(events::Failed{std::string("a process cannot be started: ") + error.what(), FilterFailed},
                  result);
        }
        if (m_trace) m_trace->End(number + 1);
        Conclude(result, m_settings.strict);
        return result;
    }

    // What is not of the one result alone.
    void Watch(const Event& event, std::size_t number, const RunResult& result) {
        if (const auto* const pRefused = std::get_if<events::Refused>(&event)) Refuse(*pRefused);
        if (const auto* const pAsked = std::get_if<events::PartAsked>(&event)) Show(result, pAsked->number);
        if (const auto* const pNoted = std::get_if<events::Noted>(&event)) Note(pNoted->text);
        try {
            if (m_trace) m_trace->Take(number + 1, event);
        } catch (const UsageError&) {
            const std::lock_guard guard(m_lock);
            m_failure = std::current_exception();
        }
    }

    void Show(const RunResult& result, unsigned part) {
        const std::lock_guard guard(m_lock);
        const std::string inputs =
            std::to_string(m_nextResult) + " of " + std::to_string(m_results.size()) + " inputs done, ";
        m_progress.Show((m_results.size() > 1 ? inputs : "") + result.input + ": part " +
                        std::to_string(part) + " of " + std::to_string(result.inputParts));
    }

    void Refuse(const events::Refused& refused) {
        const std::lock_guard guard(m_lock);
        if (!m_refused) m_refused = refused;
    }

    // What is true of the system is told once.
    void Note(const std::string& text) {
        const std::lock_guard guard(m_lock);
        if (m_settings.verbose && m_notes.insert(text).second) PrintProblem(text);
    }

    void Cancel() {
        const std::lock_guard guard(m_lock);
        m_cancelled = true;
        for (HostedChild* const pChild : m_children) pChild->Cancel();
    }

    // A child that hears of a cancellation while this lives.
    class Registration {
      public:
        Registration(Supervisor& supervisor, HostedChild& child)
            : m_supervisor(supervisor), m_pChild(&child) {
            const std::lock_guard guard(m_supervisor.m_lock);
            m_supervisor.m_children.insert(m_pChild);
        }
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;
        ~Registration() {
            const std::lock_guard guard(m_supervisor.m_lock);
            m_supervisor.m_children.erase(m_pChild);
        }

      private:
        Supervisor& m_supervisor;
        HostedChild* m_pChild;
    };

    const RunSettings& m_settings;
    const ResultSink& m_sink;
    std::mutex m_lock;
    std::set<HostedChild*> m_children;
    std::size_t m_nextJob = 0;
    std::size_t m_nextResult = 0;
    std::vector<std::optional<RunResult>> m_results;
    std::set<std::string> m_notes;
    std::optional<events::Refused> m_refused;
    std::exception_ptr m_failure;  // of the sink, or of the trace
    Progress m_progress;
    std::optional<TraceFile> m_trace;
    bool m_cancelled = false;
};

}  // namespace

bool Supervise(const RunSettings& settings, const ResultSink& sink) {
    return Supervisor(settings, sink).Run();
}

}  // namespace devkit::filterhost
