#include "devkit/validate/memoryprobe.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>

#include "devkit/common/json.h"
#include "devkit/filterhost/hostedrun.h"
#include "devkit/validate/judging.h"

namespace devkit::validate {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Allocation, site, way, mayBeRuntime)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(MemoryQuestion, way, isForGood, sites, blocks)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(MemoryAnswer, isIdle, allocations, hasFailed, isWhole, done, blocks,
                                   leaked)

namespace {

using filterhost::EventSink;
using filterhost::HostedRun;
using filterhost::Order;
using Json = nlohmann::json;

std::vector<HMODULE> LoadedModulesOf(const filterhost::HostSettings& settings) {
    std::vector<HMODULE> modules;
    for (const std::filesystem::path& dll : ModulesOf(settings))
        modules.push_back(GetModuleHandleW(dll.c_str()));
    return modules;
}

Sites SitesOf(const std::vector<Allocation>& allocations) {
    Sites sites;
    for (const Allocation& allocation : allocations) sites.insert(allocation.site);
    return sites;
}

// Filters at work, job after job, whose memory can fail.
class FiltersAtWork {
  public:
    FiltersAtWork(const Order& order, const EventSink& sink)
        : m_order(order), m_pRun(std::make_unique<HostedRun>(order.host, sink)) {
        m_memory.emplace(LoadedModulesOf(order.host), [&sink] { sink(filterhost::events::Told{kBadAlloc}); });
    }

    [[nodiscard]] FailingMemory& Memory() { return *m_memory; }

    // False when the filter has not come to its end: then nothing more can be run.
    bool Run(const EventSink& sink) {
        const bool isOver = m_pRun->Run(m_order.job, sink);
        // Under threads that are still at it nothing can be unloaded.
        if (!isOver) static_cast<void>(m_pRun.release());
        return isOver;
    }
    // Tells nobody; null when the filter has not come to its end.
    std::shared_ptr<const RunResult> RunQuietly() {
        struct Seen {
            std::mutex lock;
            RunResult result;
        };
        // Threads that the filter leaves behind may still tell.
        const auto seen = std::make_shared<Seen>();
        const bool isOver = Run([seen](const filterhost::Event& event) {
            const std::lock_guard guard(seen->lock);
            filterhost::Apply(event, seen->result);
        });
        return isOver ? std::shared_ptr<const RunResult>(seen, &seen->result) : nullptr;
    }

  private:
    const Order& m_order;
    std::optional<FailingMemory> m_memory;  // outlives the modules
    std::unique_ptr<HostedRun> m_pRun;
};

// What the job without memory leaves behind each time that it is run; what it leaves once may be kept for the
// jobs to come.
std::size_t Leaked(FiltersAtWork& filters, const MemoryQuestion& question, std::size_t blocks) {
    filters.Memory().Fail(question.way, question.isForGood, question.sites);
    const bool isOver = filters.RunQuietly() != nullptr;
    filters.Memory().Stop();
    if (!isOver || filters.RunQuietly() == nullptr) return 0;
    const std::size_t now = filters.Memory().BlocksOf(question.sites);
    return now > blocks ? now - blocks : 0;
}

}  // namespace

std::vector<std::filesystem::path> ModulesOf(const filterhost::HostSettings& settings) {
    std::vector<std::filesystem::path> modules;
    for (const filterhost::FilterSettings& filter : settings.filters) {
        if (std::ranges::find(modules, filter.dll) == modules.end()) modules.push_back(filter.dll);
    }
    return modules;
}

std::string WriteQuestion(const MemoryQuestion& question) { return common::JsonText(Json(question)); }

MemoryAnswer ReadAnswer(const std::string& text) { return common::ParseJson(text).get<MemoryAnswer>(); }

void ProbeFailingMemory(const Order& order, const EventSink& sink) {
    const auto question = common::ParseJson(order.probeArgument).get<MemoryQuestion>();
    const bool isLooking = question.way == 0;
    FiltersAtWork filters(order, sink);
    MemoryAnswer answer;
    answer.isIdle = filters.Memory().IsIdle();
    if (isLooking) {
        filters.Memory().Record();
    } else {
        filters.Memory().Fail(question.way, question.isForGood, question.sites);
    }
    const bool isOver = filters.Run(sink);
    answer.hasFailed = filters.Memory().HasFailed();
    answer.allocations = filters.Memory().Recorded();
    filters.Memory().Stop();
    if (!isOver) return;
    sink(filterhost::events::CallBegun{"the next job"});
    const auto again = filters.RunQuietly();
    if (again == nullptr) {
        sink(filterhost::events::Crashed{{0, "the filter does not come to the end of the job after it"}});
        return;
    }
    answer.isWhole = again->end && again->end->whole;
    answer.done = DoneToParts(*again);
    const Sites sites = question.sites.empty() ? SitesOf(answer.allocations) : question.sites;
    answer.blocks = filters.Memory().BlocksOf(sites);
    if (!isLooking && answer.blocks > question.blocks)
        answer.leaked = Leaked(filters, question, answer.blocks);
    sink(filterhost::events::CallEnded{"the next job"});
    sink(filterhost::events::Told{common::JsonText(Json(answer))});
}

}  // namespace devkit::validate
