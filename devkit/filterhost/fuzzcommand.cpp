#include "platform/windows.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/file.h"
#include "devkit/common/leave.h"
#include "devkit/common/threads.h"
#include "devkit/filterhost/commands.h"
#include "devkit/filterhost/console.h"
#include "devkit/filterhost/crashreport.h"
#include "devkit/filterhost/filecheck.h"
#include "devkit/filterhost/fuzzfinding.h"
#include "devkit/filterhost/fuzzworker.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/filterhost/interrupt.h"
#include "devkit/filterhost/progress.h"
#include "devkit/filterhost/runevent.h"
#include "devkit/filterhost/ticketprovider.h"
#include "devkit/fuzz/guide.h"
#include "devkit/fuzz/minimiser.h"

namespace devkit::filterhost {
namespace {

using Clock = std::chrono::steady_clock;
using Path = std::filesystem::path;

// A hang takes the whole time limit each time.
constexpr unsigned kMostTries = 40;
constexpr unsigned kMostTriesOfAHang = 6;

void WriteWhole(const Path& path, const std::string& bytes, const char* option) try {
    common::SaveFile(path, bytes);
} catch (const common::Error& error) {
    throw UsageError(std::string(option) + ": " + error.what());
}

std::set<std::string> LayersOf(const fuzz::FuzzCase& fuzzCase) {
    std::set<std::string> layers;
    for (const fuzz::Mutation& mutation : fuzzCase.mutations) layers.insert(NameOf(mutation.layer));
    return layers;
}

// Runs cases in several processes, looks closer at those that end as they must
// not, and keeps the account.
class Fuzzing {
  public:
    explicit Fuzzing(const FuzzSettings& settings)
        : m_settings(settings), m_runner(settings), m_progress(!settings.quiet) {
        m_summary.firstSeed = m_next = settings.seed;
        if (settings.guided) m_guide.emplace(settings.mostKept);
        for (const ListedCase& listed : settings.listed) {
            const std::string& base = m_runner.BaseOf({listed.chain});
            if (listed.base.empty() || listed.base == base) continue;
            throw UsageError("--chains: " + fuzz::TextOf(listed.chain) + " is made of " + base + ", not of " +
                             listed.base + ": the documents are others than those that it was found with");
        }
    }

    // False when the user interrupted.
    bool Run() {
        const Interrupt interrupt([this] { m_stop = true; });
        if (m_guide) MeasureBases();
        const std::uint64_t cases = m_settings.cases.value_or(SIZE_MAX - m_settings.listed.size());
        common::RunInThreads(m_settings.parallel, cases + m_settings.listed.size(), [this] { TakeCases(); });
        if (m_failure) std::rethrow_exception(m_failure);
        m_summary.seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
        if (m_guide)
            m_summary.guidance = {m_guide->Reached(), m_guide->ReachedByBases(), m_guide->Kept(), m_added};
        std::ranges::sort(m_summary.findings, {}, &FuzzFinding::chain);
        for (FuzzFinding& finding : m_summary.findings)
            finding.likewise = m_causes.at({finding.end.kind, finding.end.cause}) - 1;
        return !m_stop;
    }

    [[nodiscard]] const FuzzSummary& Summary() const { return m_summary; }

  private:
    struct Next {
        fuzz::Chain chain;
        bool isListed = false;
    };

    // What the documents reach as they are: each as a case of which no mutation is kept.
    void MeasureBases() {
        FuzzChild child(m_settings);
        std::set<std::string> measured;
        for (std::uint64_t seed = 0; measured.size() < m_runner.CountOfBases() && !m_stop; ++seed) {
            const FuzzSeed unchanged{{seed}, std::vector<std::size_t>()};
            if (measured.insert(m_runner.BaseOf(unchanged)).second)
                m_guide->TakeBase(child.Run(unchanged).edges);
        }
    }

    void TakeCases() try {
        FuzzChild child(m_settings);
        while (const std::optional<Next> next = NextCase()) {
            const FuzzAnswer answer = child.Run({next->chain});
            Count(*next, answer);
            const FuzzEnd& end = answer.end;
            if (IsFinding(end.kind) && IsNew(end)) Look(next->chain, end);
        }
    } catch (...) {
        const std::lock_guard guard(m_lock);
        if (!m_failure) m_failure = std::current_exception();
    }

    // First the seeds, then what is listed.
    std::optional<Next> NextCase() {
        const std::lock_guard guard(m_lock);
        const bool isOver =
            (m_settings.cases && m_next - m_settings.seed >= *m_settings.cases) ||
            (m_settings.duration.count() > 0 && Clock::now() - m_start >= m_settings.duration);
        if (m_stop || m_failure) return std::nullopt;
        if (isOver && m_nextListed == m_settings.listed.size()) return std::nullopt;
        if (isOver) return Next{m_settings.listed[m_nextListed++].chain, true};
        const std::uint64_t seed = m_next++;
        return Next{m_guide ? m_guide->ChainOf(seed) : fuzz::Chain{seed}};
    }

    void Count(const Next& next, const FuzzAnswer& answer) {
        const fuzz::FuzzCase fuzzCase = m_runner.CaseOf({next.chain});
        const FuzzEnd& end = answer.end;
        const std::lock_guard guard(m_lock);
        std::size_t edges = 0;
        if (m_guide) {
            // A document that grows with each link would make the cases dear.
            const bool canGrow = !IsFinding(end.kind) && answer.size <= fuzz::kMostBaseBytes;
            edges = m_guide->Take(next.chain, answer.edges, canGrow);
        }
        if (next.isListed) m_summary.listed.push_back({next.chain, end.kind, edges});
        ++m_summary.cases;
        ++m_summary.kinds[end.kind];
        if (end.kind == FuzzEnd::Refused) ++m_summary.codes[end.cause];
        if (end.kind == FuzzEnd::SystemCrash) ++m_summary.systemCrashes[end.cause];
        for (const fuzz::Mutation& mutation : fuzzCase.mutations)
            ++m_summary.mutations[NameOf(mutation.layer)];
        if (edges != 0) {
            for (const std::string& layer : LayersOf(fuzzCase)) m_added[layer] += edges;
        }
        m_progress.Show(std::to_string(m_summary.cases) + " cases, " +
                        std::to_string(m_summary.findings.size()) + " findings");
    }

    // Of ends for the same cause one is looked at.
    bool IsNew(const FuzzEnd& end) {
        const std::lock_guard guard(m_lock);
        return ++m_causes[{end.kind, end.cause}] == 1;
    }

    // How little of the case is needed for its end.
    void Look(const fuzz::Chain& chain, const FuzzEnd& end) {
        FuzzFinding finding;
        finding.chain = chain;
        finding.end = end;
        FuzzChild child(m_settings);
        const auto isSame = [&](const FuzzSeed& which) {
            child.Renew();
            const FuzzEnd again = child.Run(which).end;
            return again.kind == end.kind && again.cause == end.cause;
        };
        finding.base = m_runner.BaseOf({chain});
        finding.isRepeatable = isSame({chain});
        if (finding.isRepeatable) {
            finding.mutations = fuzz::Minimise(
                m_runner.CaseOf({chain}).mutations.size(),
                [&](const std::vector<std::size_t>& kept) {
                    return isSame({chain, kept});
                },
                end.kind == FuzzEnd::Hang ? kMostTriesOfAHang : kMostTries);
            Keep(finding);
        }
        const std::lock_guard guard(m_lock);
        m_progress.Clear();
        PrintProblem(TextOf(m_settings, finding));
        m_summary.findings.push_back(std::move(finding));
    }

    // Writes the smallest input, its user's ticket beside it, and says what was
    // done.
    void Keep(FuzzFinding& finding) {
        const fuzz::BadJob job = m_runner.JobOf({finding.chain, finding.mutations});
        finding.done = job.done;
        std::error_code failure;
        std::filesystem::create_directories(m_settings.findings, failure);
        std::string name = fuzz::TextOf(finding.chain);
        std::ranges::replace(name, '/', '-');
        finding.file = m_settings.findings / (name + ".xps");
        WriteWhole(finding.file, job.package, "--out-dir");
        if (job.environment.userTicket)
            WriteWhole(m_settings.findings / (name + "-user-ticket.xml"), *job.environment.userTicket,
                       "--out-dir");
        WriteWhole(m_settings.findings / (name + ".txt"), TextOf(m_settings, finding) + "\n", "--out-dir");
    }

    const FuzzSettings& m_settings;
    const FuzzRunner m_runner;
    const Clock::time_point m_start = Clock::now();
    std::atomic<bool> m_stop = false;
    std::mutex m_lock;
    std::uint64_t m_next = 0;
    std::size_t m_nextListed = 0;
    std::optional<fuzz::Guide> m_guide;
    std::map<std::string, std::uint64_t> m_added;                           // edges, by what was changed
    std::map<std::pair<FuzzEnd::Kind, std::string>, std::size_t> m_causes;  // and how many ended for it
    FuzzSummary m_summary;
    std::exception_ptr m_failure;
    Progress m_progress;
};

std::string LineOf(const FuzzSeed& which, const FuzzEnd& end) {
    const std::string& text = end.text.empty() ? end.cause : end.text;
    return "seed " + fuzz::TextOf(which.chain) + ": " + NameOf(end.kind) + (text.empty() ? "" : ": " + text);
}

// The one case, in this process, where a debugger finds it.
ExitStatus Reproduce(const FuzzSettings& settings) {
    FuzzRunner runner(settings);
    FuzzSeed which{*settings.again};
    if (!settings.mutations.empty()) which.kept = settings.mutations;
    PrintOut(runner.BaseOf(which) + "\n");
    for (const std::string& done : runner.JobOf(which).done)
        PrintOut("  " + (done.empty() ? "nothing" : done) + "\n");
    struct Told {
        const FuzzSettings& settings;
        const FuzzSeed& which;
    } told{settings, which};
    const CrashReport crash(
        [](void* pTold, std::string_view line) noexcept {
            const auto& [own, seed] = *static_cast<const Told*>(pTold);
            try {
                PrintProblem(LineOf(seed, EndOf(std::get<events::Crashed>(ReadEvent(line)).crash, own.host)));
            } catch (...) {
                // The process has nothing left to tell it with.
            }
        },
        &told);
    bool isOver = true;
    const FuzzEnd end = runner.Run(which, isOver).end;
    if (IsFinding(end.kind)) {
        PrintProblem(LineOf(which, end));
    } else {
        PrintOut(LineOf(which, end) + "\n");
    }
    // Under threads of the filter that are left its DLL cannot be unloaded.
    if (!isOver) common::LeaveProcess(static_cast<unsigned>(StatusOf(end.kind)));
    return StatusOf(end.kind);
}

}  // namespace

int Fuzz(const FuzzSettings& settings) {
    CheckHost(settings.host, "FILTER");
    CheckFiles(settings);
    if (settings.again) return Reproduce(settings);
    Fuzzing fuzzing(settings);
    const bool isWhole = fuzzing.Run();
    if (!settings.quiet) PrintOut(TextOf(fuzzing.Summary()));
    if (settings.json) WriteWhole(*settings.json, JsonOf(settings, fuzzing.Summary()), "--json");
    return isWhole ? fuzzing.Summary().Status() : kInterrupted;
}

}  // namespace devkit::filterhost
