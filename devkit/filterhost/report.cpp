#include "devkit/filterhost/report.h"

#include "platform/windows.h"

#include <system_error>

#include <nlohmann/json.hpp>

#include "devkit/common/hresult.h"
#include "devkit/common/json.h"
#include "devkit/filterhost/exitstatus.h"

namespace devkit::filterhost {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view kEnd = "\n]\n";

Json WidthOf(const std::optional<PageSize>& page) { return page ? Json(page->width) : Json(); }

Json HeightOf(const std::optional<PageSize>& page) { return page ? Json(page->height) : Json(); }

Json ShutdownOf(const RunResult& result) {
    const bool isCalled = result.end && !result.end->shutdownCodes.empty();
    return isCalled ? Json(common::HexOf(result.end->shutdownCodes.front())) : Json();
}

Json ErrorOf(const RunResult& result) {
    std::string text;
    for (const std::string& error : result.errors) text += (text.empty() ? "" : "; ") + error;
    return text.empty() ? Json() : Json(text);
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
    for (const PartFacts& part : result.parts) {
        Json& json = parts.emplace_back();
        json["kind"] = part.kind;
        json["uri"] = part.name.empty() ? Json() : Json(part.name);
        json["ticket_in"] = part.ticketBefore;
        json["ticket_out"] = part.ticketAfter;
        if (part.page) AddPageFacts(json, *part.page);
    }
    return parts;
}

Json TimeOf(const RunTimes& times) {
    Json json;
    json["total"] = times.total;
    json["rest"] = times.Rest();
    json["filters"] = Json::array();
    for (const FilterTimes& each : times.filters) {
        json["filters"].push_back({{"name", each.name},
                                   {"filter", each.filter},
                                   {"ticket_provider", each.ticketProvider},
                                   {"pipeline", each.pipeline},
                                   {"observer", each.observer}});
    }
    return json;
}

}  // namespace

std::string WriteResult(const RunResult& result) {
    Json json;
    json["input"] = result.input;
    json["output"] = result.output;
    json["hresult"] = result.end ? Json(common::HexOf(result.end->result)) : Json();
    json["shutdown"] = ShutdownOf(result);
    json["breaches"] = result.breaches;
    json["parts"] = WriteParts(result);
    json["findings"] = result.findings;
    json["missing"] = result.missing;
    json["seconds"] = result.times ? TimeOf(*result.times) : Json();
    json["error"] = ErrorOf(result);
    json["crash"] = result.crash ? Json(TextOf(*result.crash)) : Json();
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

Report::Report(std::filesystem::path path)
    : m_path(std::move(path)),
      m_file(CreateFileW(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr)) {
    if (!m_file.IsOpen()) {
        throw UsageError("--json: " + common::PathText(m_path) + " cannot be written: " +
                         std::system_category().message(static_cast<int>(GetLastError())));
    }
    Write("[" + std::string(kEnd));
}

void Report::Add(const RunResult& result) {
    // Over the end of what is there, and with its own end in one piece.
    LARGE_INTEGER back;
    back.QuadPart = -static_cast<LONGLONG>(kEnd.size());
    SetFilePointerEx(m_file.Get(), back, nullptr, FILE_END);
    Write(std::string(m_isEmpty ? "\n" : ",\n") + WriteResult(result) + std::string(kEnd));
    m_isEmpty = false;
}

void Report::Write(std::string_view text) {
    DWORD written = 0;
    if (WriteFile(m_file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr)) return;
    throw UsageError("--json: " + common::PathText(m_path) + " cannot be written: " +
                     std::system_category().message(static_cast<int>(GetLastError())));
}

}  // namespace devkit::filterhost
