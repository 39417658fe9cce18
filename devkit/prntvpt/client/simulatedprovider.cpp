#include "devkit/prntvpt/client/simulatedprovider.h"

#include <charconv>
#include <system_error>
#include <utility>

#include <nlohmann/json.hpp>

namespace devkit::prntvpt {
namespace {

using Json = nlohmann::json;

template <typename Function>
[[nodiscard]] Function* Find(HMODULE module, const char* name) {
    // Through void*, because the compiler rightly doubts a cast from one function type to another.
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// Texts of the provider can grow between the question for their size and the call that fills them.
template <typename Function>
[[nodiscard]] std::string ReadText(Function* pFunction) {
    std::string text;
    for (SIZE_T size = pFunction(nullptr, 0); size != 0;) {
        text.resize(size);
        const SIZE_T needed = pFunction(text.data(), text.size());
        if (needed <= size) {
            text.resize(needed == 0 ? 0 : needed - 1);
            break;
        }
        size = needed;
    }
    return text;
}

template <typename Value>
[[nodiscard]] std::optional<Value> Optional(const Json& value) {
    return value.is_null() ? std::nullopt : std::optional<Value>(value.get<Value>());
}

[[nodiscard]] HRESULT ParseResult(const std::string& text) {
    std::uint32_t code = 0;
    const char* const pEnd = text.data() + text.size();
    if (!text.starts_with("0x") || std::from_chars(text.data() + 2, pEnd, code, 16).ptr != pEnd) {
        throw std::runtime_error("not a result code: " + text);
    }
    return static_cast<HRESULT>(code);
}

[[nodiscard]] ProviderCall ParseCall(const Json& json) {
    ProviderCall call;
    call.function = json.at("function").get<std::string>();
    call.handle = Optional<std::uint64_t>(json.at("handle"));
    call.scope = Optional<std::string>(json.at("scope"));
    call.thread = json.at("thread").get<std::uint32_t>();
    call.impersonating = json.at("impersonating").get<bool>();
    call.expectedToken = Optional<bool>(json.at("expected_token"));
    call.result = ParseResult(json.at("result").get<std::string>());
    call.base = Optional<std::string>(json.at("base"));
    call.delta = Optional<std::string>(json.at("delta"));
    call.output = Optional<std::string>(json.at("output"));
    call.error = Optional<std::string>(json.at("error"));
    return call;
}

}  // namespace

ProviderReport ParseProviderReport(std::string json) {
    ProviderReport report;
    const Json parsed = Json::parse(json);
    for (const Json& call : parsed.at("calls")) report.calls.push_back(ParseCall(call));
    report.counts = parsed.at("counts").get<std::map<std::string, std::uint64_t>>();
    for (const Json& handle : parsed.at("open_handles")) {
        report.openHandles.push_back({handle.at("handle").get<std::uint64_t>(),
                                      handle.at("printer").get<std::string>(),
                                      handle.at("thread").get<std::uint32_t>()});
    }
    for (const Json& breach : parsed.at("breaches")) {
        report.breaches.push_back(
            {breach.at("stop").get<std::string>(), breach.at("text").get<std::string>()});
    }
    report.notes = parsed.at("notes").get<std::vector<std::string>>();
    report.json = std::move(json);
    return report;
}

SimulatedProvider::SimulatedProvider(const std::filesystem::path& dll) {
    // Neither the folders of the search path nor one beside the program can take its place.
    m_module = LoadLibraryExW(std::filesystem::absolute(dll).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (m_module == nullptr) {
        throw std::runtime_error(dll.string() + ": " +
                                 std::system_category().message(static_cast<int>(GetLastError())));
    }
    m_pConfigure = Find<SimConfigureFunction>(m_module, "SimConfigure");
    m_pExpectToken = Find<SimExpectTokenFunction>(m_module, "SimExpectToken");
    m_pReport = Find<SimReportFunction>(m_module, "SimReport");
    m_pDefaultTicket = Find<SimDefaultTicketFunction>(m_module, "SimDefaultTicket");
    m_pReset = Find<SimResetFunction>(m_module, "SimReset");
    m_pFinish = Find<SimFinishFunction>(m_module, "SimFinish");
    if (m_pConfigure == nullptr || m_pExpectToken == nullptr || m_pReport == nullptr ||
        m_pDefaultTicket == nullptr || m_pReset == nullptr || m_pFinish == nullptr) {
        throw std::runtime_error(dll.string() + ": not the simulated print ticket provider");
    }
}

void SimulatedProvider::Configure(const ProviderSettings& settings) {
    const std::u8string device = settings.device.u8string();
    Json json = {{"device", std::string(device.begin(), device.end())},
                 {"switches", settings.switches},
                 {"record_tickets", settings.recordTickets}};
    if (!settings.printers.empty()) json["printers"] = settings.printers;
    char error[1024] = "";
    const HRESULT hr =
        m_pConfigure(json.dump(-1, ' ', false, Json::error_handler_t::replace).c_str(), error, sizeof(error));
    if (FAILED(hr)) throw ProviderConfigurationError(error);
}

void SimulatedProvider::ExpectToken(HANDLE token) {
    const HRESULT hr = m_pExpectToken(token);
    if (FAILED(hr)) throw std::system_error(hr & 0xFFFF, std::system_category(), "SimExpectToken");
}

std::string SimulatedProvider::DefaultTicket() const { return ReadText(m_pDefaultTicket); }

ProviderReport SimulatedProvider::Report() const { return ParseProviderReport(ReadText(m_pReport)); }

void SimulatedProvider::Reset() { m_pReset(); }

void SimulatedProvider::Finish() { m_pFinish(); }

}  // namespace devkit::prntvpt
