#include "devkit/filterhost/report.h"

#include <nlohmann/json.hpp>

#include "devkit/common/hresult.h"

namespace devkit::filterhost {
namespace {

using Json = nlohmann::ordered_json;
using pipeline::PartPtr;
using pipeline::RunOutcome;
using pipeline::SentPart;

Json TextOrNull(const std::optional<std::string>& text) { return text ? Json(*text) : Json(); }

Json NameOrNull(const PartPtr& part) { return part == nullptr ? Json() : Json(part->Name()); }

Json WidthOf(const std::optional<package::PageDimensions>& page) { return page ? Json(page->width) : Json(); }

Json HeightOf(const std::optional<package::PageDimensions>& page) {
    return page ? Json(page->height) : Json();
}

Json ShutdownOf(const RunOutcome& outcome) {
    return outcome.shutdownCodes.empty() ? Json() : Json(common::HexOf(outcome.shutdownCodes.front()));
}

Json WritePart(const SentPart& part) {
    Json json;
    json["kind"] = pipeline::NameOf(part.kind);
    json["uri"] = part.name.empty() ? Json() : Json(part.name);
    json["ticket_in"] = NameOrNull(part.part == nullptr ? nullptr : part.part->inputTicket);
    json["ticket_out"] = NameOrNull(part.part == nullptr ? nullptr : part.part->ticket);
    return json;
}

void AddPageFacts(Json& json, const PageFacts& page) {
    json["width_in"] = WidthOf(page.before);
    json["height_in"] = HeightOf(page.before);
    json["width_out"] = WidthOf(page.after);
    json["height_out"] = HeightOf(page.after);
    json["markup_rewritten"] = page.rewritten;
    json["ticket_replaced"] = page.ticketReplaced;
    json["bytes_in"] = page.bytesBefore;
    json["bytes_out"] = page.bytesAfter;
}

Json WriteParts(const RunResult& result) {
    Json parts = Json::array();
    if (!result.outcome) return parts;
    auto page = result.pages.begin();
    for (const SentPart& part : result.outcome->parts) {
        Json json = WritePart(part);
        if (part.kind == pipeline::PartKind::FixedPage && page != result.pages.end())
            AddPageFacts(json, *page++);
        parts.push_back(std::move(json));
    }
    return parts;
}

Json WriteResult(const RunResult& result) {
    Json json;
    json["input"] = result.input;
    json["output"] = TextOrNull(result.output);
    json["hresult"] = result.outcome ? Json(common::HexOf(result.outcome->result)) : Json();
    json["shutdown"] = result.outcome ? ShutdownOf(*result.outcome) : Json();
    json["breaches"] = result.breaches;
    json["parts"] = WriteParts(result);
    json["findings"] = result.findings;
    json["error"] = TextOrNull(result.error);
    return json;
}

}  // namespace

std::string WriteReport(const std::vector<RunResult>& results) {
    Json report = Json::array();
    for (const RunResult& result : results) report.push_back(WriteResult(result));
    return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace devkit::filterhost
