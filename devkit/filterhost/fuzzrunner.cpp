#include "devkit/filterhost/fuzzrunner.h"

#include "platform/windows.h"

#include <psapi.h>

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/common/json.h"
#include "devkit/filterhost/edgewatch.h"
#include "devkit/filterhost/hostedrun.h"
#include "platform/utf.h"

namespace devkit::filterhost {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FuzzSeed, chain, kept)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FuzzEnd, kind, text, cause)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FuzzAnswer, end, size, edges)

namespace {

HostSettings SettingsOf(HostSettings settings, const fuzz::Environment& environment) {
    const auto append = [](std::vector<std::string>& to, const std::vector<std::string>& from) {
        to.insert(to.end(), from.begin(), from.end());
    };
    if (!environment.device.empty()) settings.device = environment.device;
    append(settings.providerSwitches, environment.providerSwitches);
    append(settings.pipelineSwitches, environment.pipelineSwitches);
    append(settings.properties, environment.properties);
    append(settings.driverValues, environment.driverValues);
    settings.cancelAt = environment.cancelAt;
    return settings;
}

// The system's DLLs that the filter brought stay when it goes, as they do in a pipeline that other filters
// use: to load them anew takes longer than the filter itself.
void KeepSystemModules() {
    std::array<HMODULE, 256> modules{};
    std::array<wchar_t, MAX_PATH> text{};
    const std::wstring folder(text.data(), GetSystemDirectoryW(text.data(), MAX_PATH));
    DWORD size = 0;
    if (!EnumProcessModules(GetCurrentProcess(), modules.data(), sizeof(modules), &size)) return;
    const std::size_t count = std::min<std::size_t>(size / sizeof(HMODULE), modules.size());
    for (std::size_t i = 0; i < count; ++i) {
        const std::wstring_view path(text.data(), GetModuleFileNameW(modules[i], text.data(), MAX_PATH));
        const bool isSystems =
            CompareStringOrdinal(path.data(), static_cast<int>(std::min(path.size(), folder.size())),
                                 folder.data(), static_cast<int>(folder.size()), TRUE) == CSTR_EQUAL;
        HMODULE kept = nullptr;
        if (isSystems) {
            GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                               reinterpret_cast<const wchar_t*>(modules[i]), &kept);
        }
    }
}

// By so many cases a filter has brought what it uses.
constexpr unsigned kCasesThatBring = 5;

}  // namespace

FuzzRunner::FuzzRunner(const FuzzSettings& settings) : m_settings(settings), m_bases(fuzz::OwnDocuments()) {
    if (!settings.corpus) return;
    std::vector<fuzz::BaseDocument> corpus = fuzz::DocumentsOf(*settings.corpus);
    if (corpus.empty())
        throw UsageError("--corpus: there is no document in " + common::PathText(*settings.corpus));
    for (fuzz::BaseDocument& document : corpus) m_bases.push_back(std::move(document));
}

fuzz::FuzzCase FuzzRunner::CaseOf(const FuzzSeed& which) const {
    fuzz::FuzzCase fuzzCase = fuzz::CaseOf(which.chain, m_bases.size());
    if (!which.kept) return fuzzCase;
    std::vector<fuzz::Mutation> kept;
    for (const std::size_t place : *which.kept) {
        if (place >= fuzzCase.mutations.size()) {
            throw UsageError("--mutations: case " + fuzz::TextOf(which.chain) + " has " +
                             std::to_string(fuzzCase.mutations.size()));
        }
        kept.push_back(fuzzCase.mutations[place]);
    }
    fuzzCase.mutations = std::move(kept);
    return fuzzCase;
}

fuzz::BadJob FuzzRunner::JobOf(const FuzzSeed& which) const { return fuzz::MakeJob(CaseOf(which), m_bases); }

const std::string& FuzzRunner::BaseOf(const FuzzSeed& which) const {
    return m_bases[fuzz::CaseOf(which.chain, m_bases.size()).base].name;
}

const std::shared_ptr<TicketProvider>& FuzzRunner::ProviderFor(const HostSettings& settings) {
    const auto kind = std::pair(settings.device, settings.providerSwitches);
    if (m_provider != nullptr && kind == m_providersKind) return m_provider;
    m_provider.reset();
    m_provider = std::make_shared<TicketProvider>(settings);
    m_providersKind = kind;
    return m_provider;
}

FuzzAnswer FuzzRunner::Run(const FuzzSeed& which, bool& isOver) {
    FuzzAnswer answer;
    fuzz::BadJob bad = JobOf(which);
    answer.size = bad.package.size();
    auto host = std::make_unique<const HostSettings>(SettingsOf(m_settings.host, bad.environment));
    Job job;
    job.inputName = "case " + fuzz::TextOf(which.chain);
    job.bytes = std::make_shared<const std::string>(std::move(bad.package));
    if (bad.environment.userTicket)
        job.userTicket = std::make_shared<const std::string>(*std::move(bad.environment.userTicket));
    std::vector<HRESULT> allowed = m_settings.allowedCodes;
    allowed.insert(allowed.end(), bad.environment.expectedCodes.begin(), bad.environment.expectedCodes.end());
    if (bad.environment.cancelAt != 0) allowed.push_back(pipeline::kJobCancelled);
    // Threads of the filter that are left may still tell.
    struct Told {
        std::mutex lock;
        RunResult result;
    };
    const auto told = std::make_shared<Told>();
    const EventSink sink = [told](const Event& event) {
        const std::lock_guard guard(told->lock);
        Apply(event, told->result);
    };
    isOver = true;
    try {
        auto run = std::make_unique<HostedRun>(*host, ProviderFor(*host), sink);
        std::optional<EdgeWatch> edges;
        if (m_settings.guided) edges.emplace(host->filters.front().dll);
        isOver = run->Run(job, sink);
        if (edges) answer.edges = edges->Reached(m_reached);
        if (edges && !isOver) edges->Abandon();
        if (m_cases++ < kCasesThatBring) KeepSystemModules();
        // Under threads that are still at it nothing can go.
        if (!isOver) static_cast<void>(run.release());
    } catch (const NoEdges&) {
        throw;
    } catch (const UsageError& error) {
        // Two switches that no provider takes together.
        answer.end = {FuzzEnd::Unreadable, error.what(), {}};
        return answer;
    }
    const std::lock_guard guard(told->lock);
    Conclude(told->result);
    answer.end = EndOf(told->result, *host, allowed);
    if (!isOver) static_cast<void>(host.release());
    return answer;
}

std::string WriteFuzzOrder(const FuzzSettings& settings) {
    return common::JsonText(nlohmann::json{WriteOrder({settings.host, {}}),
                                           settings.corpus ? common::PathText(*settings.corpus) : "",
                                           settings.allowedCodes, settings.guided});
}

FuzzSettings ReadFuzzOrder(std::string_view line) {
    const nlohmann::json json = common::ParseJson(line);
    FuzzSettings settings;
    settings.host = ReadOrder(json.at(0).get<std::string>()).host;
    const auto corpus = json.at(1).get<std::string>();
    if (!corpus.empty()) settings.corpus = platform::ToUtf16(corpus);
    settings.allowedCodes = json.at(2).get<std::vector<HRESULT>>();
    settings.guided = json.at(3).get<bool>();
    return settings;
}

std::string WriteSeed(const FuzzSeed& which) { return common::JsonText(nlohmann::json(which)); }

FuzzSeed ReadSeed(std::string_view line) { return common::ParseJson(line).get<FuzzSeed>(); }

std::string WriteAnswer(const FuzzAnswer& answer) { return common::JsonText(nlohmann::json(answer)); }

FuzzAnswer ReadAnswer(std::string_view line) { return common::ParseJson(line).get<FuzzAnswer>(); }

}  // namespace devkit::filterhost
