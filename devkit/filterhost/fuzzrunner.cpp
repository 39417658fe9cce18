#include "devkit/filterhost/fuzzrunner.h"

#include <memory>
#include <mutex>
#include <utility>

#include "devkit/common/file.h"
#include "devkit/common/json.h"
#include "devkit/filterhost/hostedrun.h"
#include "platform/utf.h"

namespace devkit::filterhost {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FuzzSeed, seed, kept)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(FuzzEnd, kind, text, cause)

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

}  // namespace

FuzzRunner::FuzzRunner(const FuzzSettings& settings) : m_settings(settings), m_bases(fuzz::OwnDocuments()) {
    if (!settings.corpus) return;
    std::vector<fuzz::BaseDocument> corpus = fuzz::DocumentsOf(*settings.corpus);
    if (corpus.empty())
        throw UsageError("--corpus: there is no document in " + common::PathText(*settings.corpus));
    for (fuzz::BaseDocument& document : corpus) m_bases.push_back(std::move(document));
}

fuzz::FuzzCase FuzzRunner::CaseOf(const FuzzSeed& which) const {
    fuzz::FuzzCase fuzzCase = fuzz::CaseOf(which.seed, m_bases.size());
    if (!which.kept) return fuzzCase;
    std::vector<fuzz::Mutation> kept;
    for (const std::size_t place : *which.kept) {
        if (place >= fuzzCase.mutations.size()) {
            throw UsageError("--mutations: case " + std::to_string(which.seed) + " has " +
                             std::to_string(fuzzCase.mutations.size()));
        }
        kept.push_back(fuzzCase.mutations[place]);
    }
    fuzzCase.mutations = std::move(kept);
    return fuzzCase;
}

fuzz::BadJob FuzzRunner::JobOf(const FuzzSeed& which) const { return fuzz::MakeJob(CaseOf(which), m_bases); }

const std::string& FuzzRunner::BaseOf(const FuzzSeed& which) const {
    return m_bases[fuzz::CaseOf(which.seed, m_bases.size()).base].name;
}

FuzzEnd FuzzRunner::Run(const FuzzSeed& which, bool& isOver) const {
    fuzz::BadJob bad = JobOf(which);
    auto host = std::make_unique<const HostSettings>(SettingsOf(m_settings.host, bad.environment));
    Job job;
    job.inputName = "case " + std::to_string(which.seed);
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
        auto run = std::make_unique<HostedRun>(*host, sink);
        isOver = run->Run(job, sink);
        // Under threads that are still at it nothing can go.
        if (!isOver) static_cast<void>(run.release());
    } catch (const UsageError& error) {
        // Two switches that no provider takes together.
        return {FuzzEnd::Unreadable, error.what(), {}};
    }
    const std::lock_guard guard(told->lock);
    Conclude(told->result);
    FuzzEnd end = EndOf(told->result, *host, allowed);
    if (!isOver) static_cast<void>(host.release());
    return end;
}

std::string WriteFuzzOrder(const FuzzSettings& settings) {
    return nlohmann::json{WriteOrder({settings.host, {}}),
                          settings.corpus ? common::PathText(*settings.corpus) : "", settings.allowedCodes}
        .dump();
}

FuzzSettings ReadFuzzOrder(std::string_view line) {
    const nlohmann::json json = nlohmann::json::parse(line);
    FuzzSettings settings;
    settings.host = ReadOrder(json.at(0).get<std::string>()).host;
    const auto corpus = json.at(1).get<std::string>();
    if (!corpus.empty()) settings.corpus = platform::ToUtf16(corpus);
    settings.allowedCodes = json.at(2).get<std::vector<HRESULT>>();
    return settings;
}

std::string WriteSeed(const FuzzSeed& which) { return nlohmann::json(which).dump(); }

FuzzSeed ReadSeed(std::string_view line) { return nlohmann::json::parse(line).get<FuzzSeed>(); }

std::string WriteEnd(const FuzzEnd& end) {
    return nlohmann::json(end).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

FuzzEnd ReadEnd(std::string_view line) { return nlohmann::json::parse(line).get<FuzzEnd>(); }

}  // namespace devkit::filterhost
