#include "devkit/filterhost/supervisor.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "devkit/filterhost/childprocess.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/filterhost/progress.h"
#include "devkit/filterhost/runevent.h"
#include "devkit/filterhost/worker.h"

namespace devkit::filterhost {
namespace {

using Clock = ChildProcess::Clock;

std::string StatusText(DWORD status) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), status < 0x10000 ? "%lu" : "0x%08lX", status);
    return text.data();
}

class Supervisor {
  public:
    Supervisor(const RunSettings& settings, const ResultSink& sink)
        : m_settings(settings), m_sink(sink), m_progress(!settings.quiet) {
        m_results.resize(settings.jobs.size());
    }

    bool Run() {
        const Interrupt interrupt([this] { Cancel(); });
        unsigned parallel = m_settings.parallel;
        if (parallel == 0) parallel = std::max(1U, std::thread::hardware_concurrency());
        std::vector<std::thread> threads(std::min<std::size_t>(parallel, m_settings.jobs.size()));
        for (std::thread& thread : threads) thread = std::thread([this] { TakeJobs(); });
        for (std::thread& thread : threads) thread.join();
        if (m_failure) std::rethrow_exception(m_failure);
        if (!m_refused) return !m_cancelled;
        if (m_refused->status == WrongUsage) throw UsageError(m_refused->text);
        throw std::runtime_error(m_refused->text);
    }

  private:
    void TakeJobs() {
        while (const std::optional<std::size_t> number = NextJob()) {
            RunResult result = RunJob(m_settings.jobs[*number]);
            const std::lock_guard guard(m_lock);
            if (m_refused || m_failure) return;
            m_results[*number] = std::move(result);
            GiveResults();
        }
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

    RunResult RunJob(const Job& job) {
        RunResult result;
        result.input = job.inputName;
        try {
            ChildProcess child(L"work");
            const Registration registration(*this, child);
            child.Send(WriteOrder({m_settings.host, job}));
            Watch(child, result);
        } catch (const std::system_error& error) {
            Apply(events::Failed{std::string("a process cannot be started: ") + error.what(), FilterFailed},
                  result);
        }
        Conclude(result, m_settings.strict);
        return result;
    }

    // Until the child has finished, or came to another end.
    void Watch(ChildProcess& child, RunResult& result) {
        std::string line;
        for (;;) {
            switch (child.Read(line, Clock::now() + m_settings.timeout)) {
                case ChildProcess::Got::Line:
                    if (Take(line, result)) return;
                    break;
                case ChildProcess::Got::Nothing:
                    Apply(events::Crashed{{0, "the filter made no progress for " +
                                                  std::to_string(m_settings.timeout.count()) + " s"}},
                          result);
                    return;
                case ChildProcess::Got::End:
                    const DWORD status = child.ExitCode();
                    Apply(events::Crashed{{status,
                                           "the filter ended the process with status " + StatusText(status)}},
                          result);
                    return;
            }
        }
    }

    // Whether the event in the line was the last one.
    bool Take(const std::string& line, RunResult& result) {
        try {
            const Event event = ReadEvent(line);
            if (std::holds_alternative<events::Finished>(event)) return true;
            if (const auto* const pRefused = std::get_if<events::Refused>(&event)) Refuse(*pRefused);
            if (const auto* const pAsked = std::get_if<events::PartAsked>(&event))
                Show(result, pAsked->number);
            if (const auto* const pNoted = std::get_if<events::Noted>(&event)) Note(pNoted->text);
            Apply(event, result);
        } catch (const std::exception&) {
            // A filter that writes to a handle that is not its own.
            Apply(events::Found{std::string(common::FactsOf(common::Check::ForeignOutput).id),
                                "something else than the host wrote to the host's pipe"},
                  result);
        }
        return false;
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
        for (ChildProcess* const pChild : m_children) pChild->Send(kCancelCommand);
    }

    // A child that hears of a cancellation while this lives.
    class Registration {
      public:
        Registration(Supervisor& supervisor, ChildProcess& child)
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
        ChildProcess* m_pChild;
    };

    const RunSettings& m_settings;
    const ResultSink& m_sink;
    std::mutex m_lock;
    std::set<ChildProcess*> m_children;
    std::size_t m_nextJob = 0;
    std::size_t m_nextResult = 0;
    std::vector<std::optional<RunResult>> m_results;
    std::set<std::string> m_notes;
    std::optional<events::Refused> m_refused;
    std::exception_ptr m_failure;  // of the sink
    Progress m_progress;
    bool m_cancelled = false;
};

}  // namespace

bool Supervise(const RunSettings& settings, const ResultSink& sink) {
    return Supervisor(settings, sink).Run();
}

}  // namespace devkit::filterhost
