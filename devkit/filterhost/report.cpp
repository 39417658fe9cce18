#include "devkit/filterhost/report.h"

#include <algorithm>
#include <cstdint>
#include <map>

#include "devkit/common/file.h"
#include "devkit/common/hresult.h"
#include "devkit/common/json.h"
#include "devkit/common/text.h"
#include "devkit/filterhost/commandline.h"
#include "devkit/filterhost/devicefolder.h"
#include "devkit/filterhost/effectivetickets.h"
#include "devkit/filterhost/fileversion.h"
#include "devkit/filterhost/summary.h"

namespace devkit::filterhost {
namespace {

using common::Describe;
using OrderedJson = nlohmann::ordered_json;

constexpr int kVersion = 2;
constexpr std::string_view kReportEnd = "\n  ]\n}\n";

// An object with a line for each member, and for each element of an array: to be read by people and compared
// by tools, and yet not long. Without its closing brace.
std::string Layout(const OrderedJson& object, const std::string& indent) {
    std::string text = "{";
    for (const auto& [key, value] : object.items()) {
        text += (text.size() > 1 ? ",\n" : "\n") + indent + common::JsonText(OrderedJson(key)) + ": ";
        if (!value.is_array() || value.empty()) {
            text += common::JsonText(value);
            continue;
        }
        std::string separator = "[\n";
        for (const OrderedJson& element : value) {
            text += separator + indent + "  " + common::JsonText(element);
            separator = ",\n";
        }
        text += "\n" + indent + "]";
    }
    return text;
}

// Nothing is null.
OrderedJson OrNull(const std::string& text) { return text.empty() ? OrderedJson() : OrderedJson(text); }

OrderedJson CodeOf(const std::optional<HRESULT>& code) {
    return code ? OrderedJson(Describe(*code)) : OrderedJson();
}

OrderedJson CodesOf(const std::vector<HRESULT>& codes) {
    OrderedJson json = OrderedJson::array();
    for (const HRESULT code : codes) json.push_back(Describe(code));
    return json;
}

OrderedJson PathOf(const std::optional<std::filesystem::path>& path) {
    return path ? OrderedJson(common::PathText(*path)) : OrderedJson();
}

const char* KindText(pipeline::DataKind kind) { return kind == pipeline::DataKind::Xps ? "xps" : "stream"; }

OrderedJson WriteFilters(const HostSettings& settings) {
    OrderedJson filters = OrderedJson::array();
    for (const FilterSettings& filter : settings.filters) {
        filters.push_back({{"name", filter.name},
                           {"path", common::PathText(filter.dll)},
                           {"clsid", common::TextOf(filter.clsid)},
                           {"file_version", FileVersionOf(filter.dll)},
                           {"input", KindText(filter.input)},
                           {"output", KindText(filter.output)}});
    }
    return filters;
}

OrderedJson WriteSwitches(const RunSettings& settings) {
    const HostSettings& host = settings.host;
    return {{"pipeline_config", PathOf(host.pipelineConfig)},
            {"user_ticket", PathOf(host.userTicket)},
            {"driver_properties", host.driverProperties},
            {"ns_prefix", host.nsPrefix},
            {"tesk_type", host.teskType},
            {"driver_property", host.driverValues},
            {"queue_property", host.queueValues},
            {"device_capabilities", PathOf(host.deviceCapabilities)},
            {"property", host.properties},
            {"provider",
             host.systemProvider ? OrderedJson::array({"system"}) : OrderedJson(host.providerSwitches)},
            {"pipeline", host.pipelineSwitches},
            {"cancel_at", host.cancelAt == 0 ? OrderedJson() : OrderedJson(host.cancelAt)},
            {"timeout_s", settings.timeout.count()},
            {"in_process", settings.inProcess},
            {"strict", settings.strict}};
}

OrderedJson WriteComplaints(const std::vector<Problem>& problems, const char* severity) {
    OrderedJson list = OrderedJson::array();
    for (const Problem& problem : problems) {
        const common::CheckFacts* const pCheck = common::FindCheck(problem.id);
        list.push_back({{"id", problem.id},
                        {"severity", severity},
                        {"part", OrNull(problem.part)},
                        {"call", OrNull(problem.call)},
                        {"text", problem.text},
                        {"advice", pCheck == nullptr ? "" : pCheck->advice}});
    }
    return list;
}

OrderedJson WriteCrash(const RunResult& result) {
    if (!result.crash) return nullptr;
    return {
        {"text", TextOf(*result.crash)},
        {"code", result.crash->code == 0 ? OrderedJson()
                                         : OrderedJson(Describe(static_cast<HRESULT>(result.crash->code)))},
        {"calls", result.underWay},
        {"part", result.given.empty() ? OrderedJson() : OrderedJson(result.given.back())}};
}

OrderedJson WriteEnd(const RunResult& result) {
    if (!result.end) return nullptr;
    const RunEnd& end = *result.end;
    return {{"filter", OrNull(end.filter)},
            {"result", Describe(end.result)},
            {"shutdown_codes", CodesOf(end.shutdownCodes)},
            {"hung", end.hung},
            {"thread_ended", end.threadEnded},
            {"cancelled", end.cancelled},
            {"whole", end.whole}};
}

OrderedJson WriteFilterCalls(const RunResult& result) {
    OrderedJson filters = OrderedJson::array();
    if (!result.end) return filters;
    for (const FilterEnd& filter : result.end->filters) {
        filters.push_back({{"filter", filter.name},
                           {"InitializeFilter", CodeOf(filter.initialized)},
                           {"StartOperation", CodeOf(filter.operation)},
                           {"ShutdownOperation", CodeOf(filter.shutdownOperation)},
                           {"RequestShutdown", CodesOf(filter.shutdownCodes)},
                           {"pipeline_calls", filter.pipelineCalls}});
    }
    return filters;
}

void AddPage(OrderedJson& json, const PartFacts& part, const EffectiveTicket& ticket) {
    const PageFacts& page = *part.page;
    const auto add = [&json](const char* width, const char* height, const std::optional<PageSize>& size) {
        json[width] = size ? OrderedJson(size->width) : OrderedJson();
        json[height] = size ? OrderedJson(size->height) : OrderedJson();
    };
    add("width_in", "height_in", page.before);
    add("width_out", "height_out", page.after);
    json["markup_rewritten"] = page.rewritten;
    json["turned"] = page.turned;
    json["ticket_replaced"] = page.ticketReplaced;
    json["bytes_in"] = page.bytesBefore;
    json["bytes_out"] = page.bytesAfter;
    json["feed"] = ticket.facts.feedDirection;
    json["sheet"] = (page.ticketReplaced && part.ticketAfter ? page.newTicket : ticket.facts).mediaSize;
    json["decision"] = DecisionText(part, ticket.facts);
}

OrderedJson WriteParts(const RunResult& result) {
    const std::vector<EffectiveTicket> tickets = EffectiveTickets(result);
    OrderedJson parts = OrderedJson::array();
    auto ticket = tickets.begin();
    for (const PartFacts& part : result.parts) {
        const std::optional<EffectiveTicket::Made>& made = ticket->made;
        OrderedJson& json = parts.emplace_back();
        json["kind"] = part.kind;
        json["uri"] = OrNull(part.name);
        json["ticket_in"] = part.ticketBefore;
        json["ticket_out"] = part.ticketAfter;
        json["tickets"] = {{"own", part.ownTicket},
                           {"asked", made ? OrderedJson(made->asked) : OrderedJson()},
                           {"made", made ? OrderedJson(made->made) : OrderedJson()},
                           {"in_force", ticket->inForce},
                           {"new", part.newTicket}};
        if (part.page) AddPage(json, part, *ticket);
        ++ticket;
    }
    return parts;
}

OrderedJson WriteCalls(const common::RecordList<MadeCall>& calls) {
    // By their first calls: no two runs have the system's numbers in common.
    std::map<std::uint32_t, std::size_t> threads;
    OrderedJson list = OrderedJson::array();
    for (const MadeCall& made : calls) {
        const prntvpt::ProviderCall& call = made.call;
        const auto thread = threads.try_emplace(call.thread, threads.size() + 1).first->second;
        list.push_back({{"function", call.function},
                        {"result", Describe(call.result)},
                        {"part", OrNull(made.part)},
                        {"scope", call.scope},
                        {"handle", call.handle},
                        {"thread", thread},
                        {"as_user", call.impersonating && call.expectedToken.value_or(false)},
                        {"base", made.base},
                        {"delta", made.delta},
                        {"output", made.output},
                        {"error", call.error}});
    }
    return list;
}

// What the simulated provider was, null for the system's and after a crash.
OrderedJson WriteProvider(const RunResult& result) {
    if (!result.provider || !result.provider->configuration) return nullptr;
    const prntvpt::ProviderConfiguration& configuration = *result.provider->configuration;
    return {{"printers", configuration.printers},
            {"switches", configuration.switches},
            {"faults", configuration.faults},
            {"open_handles", result.provider->openHandles.size()}};
}

std::size_t CountPages(const RunResult& result) {
    return static_cast<std::size_t>(
        std::ranges::count(result.parts, std::string("FixedPage"), &PartFacts::kind));
}

// Where the time of the run went.
OrderedJson WriteTimes(const std::optional<RunTimes>& times) {
    if (!times) return nullptr;
    OrderedJson filters = OrderedJson::array();
    for (const FilterTimes& each : times->filters) {
        filters.push_back({{"name", each.name},
                           {"filter", each.filter},
                           {"ticket_provider", each.ticketProvider},
                           {"pipeline", each.pipeline},
                           {"observer", each.observer}});
    }
    return {{"total", times->total}, {"rest", times->Rest()}, {"filters", filters}};
}

std::string Head(const RunSettings& settings) {
    const HostSettings& host = settings.host;
    const OrderedJson head = {{"version", kVersion},
                              {"host", VersionText()},
                              {"filters", WriteFilters(host)},
                              {"device",
                               {{"name", host.device},
                                {"folder", common::PathText(FindDeviceFolder(host.device))},
                                {"printer", host.printer}}},
                              {"switches", WriteSwitches(settings)}};
    return Layout(head, "  ") + ",\n  \"inputs\": [";
}

}  // namespace

std::string WriteResult(const RunResult& result) {
    OrderedJson json;
    json["input"] = result.input;
    json["output"] = result.output;
    json["status"] = static_cast<int>(result.status);
    json["pages_in"] = result.inputPages;
    json["pages_out"] = CountPages(result);
    json["parts_in"] = result.inputParts;
    json["bytes_out"] = result.end ? OrderedJson(result.end->bytes) : OrderedJson();
    json["breaches"] = WriteComplaints(result.breaches, "breach");
    json["findings"] = WriteComplaints(result.findings, "finding");
    json["errors"] = result.errors;
    json["input_failures"] = result.inputFailures;
    json["crash"] = WriteCrash(result);
    json["end"] = WriteEnd(result);
    json["seconds"] = WriteTimes(result.times);
    json["missing"] = result.missing;
    json["filter_calls"] = WriteFilterCalls(result);
    json["provider"] = WriteProvider(result);
    json["provider_calls"] = WriteCalls(result.providerCalls);
    json["user_ticket"] = result.userTicketText;
    json["parts"] = WriteParts(result);
    json["texts"] = result.texts.All();
    return Layout(json, "      ") + "\n    }";
}

Report::Report(std::filesystem::path path, const RunSettings& settings)
    : m_file(std::move(path), "--json", Head(settings), kReportEnd) {}

void Report::Add(const RunResult& result) {
    m_file.Add(std::string(m_isEmpty ? "\n    " : ",\n    ") + WriteResult(result));
    m_isEmpty = false;
}

}  // namespace devkit::filterhost
