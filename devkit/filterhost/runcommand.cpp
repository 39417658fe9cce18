#include "platform/windows.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>

#include "devkit/common/file.h"
#include "devkit/common/leave.h"
#include "devkit/filterhost/commands.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/filecheck.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/filterhost/junitreport.h"
#include "devkit/filterhost/report.h"
#include "devkit/filterhost/summary.h"
#include "devkit/filterhost/supervisor.h"
#include "devkit/filterhost/tracefile.h"

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;

void MakeFolders(const RunSettings& settings) {
    if (!settings.outputFolder) return;
    std::error_code failure;
    std::filesystem::create_directories(*settings.outputFolder, failure);
    if (failure)
        throw UsageError("--out-dir: " + common::PathText(*settings.outputFolder) + " cannot be made");
}

// Tells of each result, and keeps the status of all.
class Teller {
  public:
    explicit Teller(const RunSettings& settings) : m_quiet(settings.quiet) {
        if (settings.json) m_report.emplace(*settings.json, settings);
        if (settings.junit) m_junit.emplace(*settings.junit, settings);
    }

    void Tell(const RunResult& result) {
        for (const std::string& problem : WriteProblems(result)) PrintProblem(problem);
        if (!m_quiet) PrintOut(WriteSummary(result));
        if (m_report) m_report->Add(result);
        if (m_junit) m_junit->Add(result);
        m_status = std::max(m_status, result.status);
    }
    [[nodiscard]] ExitStatus Status() const { return m_status; }

  private:
    const bool m_quiet;
    std::optional<Report> m_report;
    std::optional<JunitReport> m_junit;
    ExitStatus m_status = Done;
};

// Runs the jobs one after the other in this process, where a crash ends them all.
class Here {
  public:
    Here(const RunSettings& settings, Teller& teller) : m_settings(settings), m_teller(teller) {
        if (settings.trace) m_trace.emplace(*settings.trace);
    }

    // False when the user interrupted.
    bool Run() {
        const CrashReport crash(&TellLast, this);
        m_pRun = std::make_unique<HostedRun>(m_settings.host, [this](const Event& event) { Take(event); });
        const Interrupt interrupt([this] {
            m_cancelled = true;
            m_pRun->Cancel();
        });
        for (const Job& job : m_settings.jobs) {
            if (m_cancelled) return false;
            m_result = {};
            m_result.input = job.inputName;
            if (m_trace) m_trace->Name(++m_row, job.inputName);
            const bool isOver = m_pRun->Run(job, [this](const Event& event) { Take(event); });
            if (m_failure) std::rethrow_exception(m_failure);
            if (m_trace) m_trace->End(m_row);
            Conclude(m_result, m_settings.strict);
            m_teller.Tell(m_result);
            if (!isOver) Leave();
        }
        return !m_cancelled;
    }

  private:
    void Take(const Event& event) {
        const std::lock_guard guard(m_lock);
        const auto* const pNoted = std::get_if<events::Noted>(&event);
        if (pNoted != nullptr && m_settings.verbose) PrintProblem(pNoted->text);
        try {
            if (m_trace) m_trace->Take(m_row, event);
        } catch (const UsageError&) {
            // On a thread of the filter nothing may be thrown.
            m_failure = std::current_exception();
            m_trace.reset();
        }
        Apply(event, m_result);
    }

    static void TellLast(void* pHere, std::string_view line) noexcept {
        auto& here = *static_cast<Here*>(pHere);
        try {
            Apply(ReadEvent(line), here.m_result);
            Conclude(here.m_result, here.m_settings.strict);
            here.m_teller.Tell(here.m_result);
        } catch (...) {
            // The process has nothing left to tell it with.
        }
    }

    // At once: threads of the filter are left behind, and its DLL cannot be unloaded under them.
    [[noreturn]] void Leave() { common::LeaveProcess(static_cast<unsigned>(m_teller.Status())); }

    const RunSettings& m_settings;
    Teller& m_teller;
    std::unique_ptr<HostedRun> m_pRun;
    std::atomic<bool> m_cancelled = false;
    std::mutex m_lock;
    RunResult m_result;
    std::optional<TraceFile> m_trace;
    std::size_t m_row = 0;
    std::exception_ptr m_failure;  // of the trace
};

}  // namespace

int Run(const RunSettings& settings) {
    CheckHost(settings.host, "--filter");
    CheckFiles(settings);
    MakeFolders(settings);
    Teller teller(settings);
    const bool isWhole = settings.inProcess
                             ? Here(settings, teller).Run()
                             : Supervise(settings, [&](const RunResult& result) { teller.Tell(result); });
    return isWhole ? teller.Status() : kInterrupted;
}

}  // namespace devkit::filterhost
