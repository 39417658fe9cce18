#include <thread>

#include <nlohmann/json.hpp>

#include "devkit/prntvpt/control/messages.h"
#include "memorystream.h"
#include "providertest.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace tests;

using Json = nlohmann::json;

class ReportTest : public ProviderTest {
  protected:
    [[nodiscard]] Json Read() const { return Json::parse(WriteMessage(m_provider.Report())); }
};

TEST_F(ReportTest, BeginsEmptyWithoutConfiguration) {
    EXPECT_EQ((Json{{"configuration", nullptr},
                    {"calls", Json::array()},
                    {"counts", Json::object()},
                    {"open_handles", Json::array()},
                    {"breaches", Json::array()},
                    {"notes", Json::array()},
                    {"idle_faults", Json::array()}}),
              Read());
}

TEST_F(ReportTest, WithoutConfigurationThereIsNoPrinter) {
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(kNoSuchPrinter, m_provider.OpenProvider(L"SimPrinter", 1, &handle));
    EXPECT_EQ("", DefaultTicket());
}

TEST_F(ReportTest, StatesEverySwitchSoThatARunCanBeRepeated) {
    Use({"private=strict", "fault=slow:1@100"});
    const Json configuration = Read()["configuration"];
    EXPECT_EQ(Json({"SimPrinter"}), configuration["printers"]);
    EXPECT_EQ(Json({"slow:1@100"}), configuration["faults"]);
    EXPECT_EQ(21U, configuration["switches"].size());
    EXPECT_EQ("private=strict", configuration["switches"][0]);
    std::vector<std::string> switches = configuration["switches"].get<std::vector<std::string>>();
    std::string error;
    EXPECT_EQ(S_OK, m_provider.Configure(ConfigurationFor(switches).c_str(), error)) << error;
}

TEST_F(ReportTest, CallsStandInOrderWithWhatTheyWereGivenAndGaveBack) {
    Use({});
    const std::string base = DefaultTicket();
    const WrittenResult merged = Merge("\xEF\xBB\xBF" + base, Ticket(""), kPTDocumentScope);
    const WrittenResult refused = Merge("<a>", std::nullopt, kPTPageScope);
    const WrittenResult capabilities = Capabilities();
    Close();
    const ProviderReport report = Report();
    ASSERT_EQ(4U, report.calls.size());
    const ProviderCall& first = report.calls[0];
    EXPECT_EQ("PTMergeAndValidatePrintTicket", first.function);
    EXPECT_EQ("document", first.scope);
    EXPECT_EQ(GetCurrentThreadId(), first.thread);
    EXPECT_EQ(kNoConflict, first.result);
    EXPECT_EQ(base, first.base);
    EXPECT_EQ(Ticket(""), first.delta);
    EXPECT_EQ(merged.bytes, first.output);
    EXPECT_EQ(std::nullopt, first.error);
    const ProviderCall& second = report.calls[1];
    EXPECT_EQ("page", second.scope);
    EXPECT_EQ(first.handle, second.handle);
    EXPECT_EQ(kBadBase, second.result);
    EXPECT_EQ("<a>", second.base);
    EXPECT_EQ(std::nullopt, second.delta);
    EXPECT_EQ(std::nullopt, second.output);
    EXPECT_EQ("Base ticket: is not well-formed XML (line 1: The markup breaks off)", second.error);
    const ProviderCall& third = report.calls[2];
    EXPECT_EQ("PTGetPrintCapabilities", third.function);
    EXPECT_EQ(std::nullopt, third.scope);
    EXPECT_EQ(S_OK, third.result);
    EXPECT_EQ(std::nullopt, third.base);
    EXPECT_EQ(capabilities.bytes, third.output);
    EXPECT_EQ("PTCloseProvider", report.calls[3].function);
    EXPECT_EQ(
        (std::map<std::string, std::uint64_t>{
            {"PTCloseProvider", 1}, {"PTGetPrintCapabilities", 1}, {"PTMergeAndValidatePrintTicket", 2}}),
        report.counts);
    EXPECT_TRUE(report.openHandles.empty());
}

TEST_F(ReportTest, WideAndBrokenTextsAreReadable) {
    Use({"encoding=utf16le"});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    static_cast<void>(Merge("<a>\xFF</a>", std::nullopt));
    const ProviderReport report = Report();
    EXPECT_TRUE(report.calls[0].base->starts_with("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"));
    EXPECT_TRUE(report.calls[0].output->starts_with("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"));
    EXPECT_EQ("<a>\xEF\xBF\xBD</a>", report.calls[1].base);
}

TEST_F(ReportTest, TicketsCanBeLeftOut) {
    Json json = Json::parse(ConfigurationFor({}));
    json["record_tickets"] = false;
    std::string error;
    ASSERT_EQ(S_OK, m_provider.Configure(json.dump().c_str(), error));
    ASSERT_EQ(S_OK, m_provider.OpenProvider(L"SimPrinter", 1, &m_handle));
    static_cast<void>(Merge(DefaultTicket(), Ticket("")));
    static_cast<void>(Capabilities(DefaultTicket()));
    for (const ProviderCall& call : Report().calls) {
        EXPECT_EQ(std::nullopt, call.base);
        EXPECT_EQ(std::nullopt, call.delta);
        EXPECT_EQ(std::nullopt, call.output);
    }
}

TEST_F(ReportTest, ResetForgetsCallsButNoHandles) {
    Use({});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    m_provider.Reset();
    EXPECT_TRUE(Report().calls.empty());
    EXPECT_EQ(1U, Report().openHandles.size());
    EXPECT_EQ(kNoConflict, Merge(DefaultTicket(), std::nullopt).result);
}

TEST_F(ReportTest, ConfigureStartsANewReportAndOldHandlesKeepTheirDevice) {
    Use({});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    std::string error;
    ASSERT_EQ(S_OK, m_provider.Configure(ConfigurationFor({}, "longedge").c_str(), error));
    EXPECT_TRUE(Report().calls.empty());
    EXPECT_EQ(12U, Summarize(Merge(Ticket(""), std::nullopt).bytes).size());
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(kNoSuchPrinter, m_provider.OpenProvider(L"SimPrinter", 1, &handle));
}

TEST_F(ReportTest, FailedConfigureChangesNothing) {
    Use({"us=1"});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    std::string error;
    EXPECT_EQ(E_INVALIDARG, m_provider.Configure("{}", error));
    EXPECT_NE("", error);
    EXPECT_EQ(E_INVALIDARG, m_provider.Configure(nullptr, error));
    EXPECT_EQ("there is no configuration", error);
    EXPECT_EQ(1U, Report().calls.size());
    EXPECT_NE(std::string::npos, DefaultTicket().find("NorthAmericaLetter"));
}

TEST_F(ReportTest, WhatIsNotImplementedIsCounted) {
    EXPECT_EQ(E_NOTIMPL, m_provider.NotImplemented("PTConvertDevModeToPrintTicket"));
    EXPECT_EQ(1U, Report().counts.at("PTConvertDevModeToPrintTicket"));
    EXPECT_EQ(E_NOTIMPL, Report().calls[0].result);
}

TEST_F(ReportTest, CallsAreNumbered) {
    Use({});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    static_cast<void>(Capabilities());
    EXPECT_EQ(1U, Report().calls[0].sequence);
    EXPECT_EQ(2U, Report().calls[1].sequence);
    m_provider.Reset();
    static_cast<void>(Capabilities());
    EXPECT_EQ(1U, Report().calls[0].sequence);
}

TEST_F(ReportTest, TellsWhatATicketSaysOfTheSheetAlsoWhenItsTextIsLeftOut) {
    std::string error;
    const std::string json = WriteMessage(ProviderSettings{DeviceFolder("longedge"), {}, {}, false});
    ASSERT_EQ(S_OK, m_provider.Configure(json.c_str(), error)) << error;
    ASSERT_EQ(S_OK, m_provider.OpenProvider(L"LongEdge", 1, &m_handle));
    static_cast<void>(Merge(DefaultTicket(), Ticket(Select("psk:PageMediaSize", "psk:ISOA3"))));
    static_cast<void>(Merge("<a>", std::nullopt));
    const ProviderReport report = Report();
    EXPECT_EQ("ISOA3", report.calls[1].facts.mediaSize);
    EXPECT_EQ("LongEdgeFirst", report.calls[1].facts.feedDirection);
    EXPECT_EQ(printschema::TicketFacts(), report.calls[2].facts);
}

TEST_F(ReportTest, TellsANameUnderTwoPrefixesOfWhatTheCallerStartsFrom) {
    std::string twice = Ticket(Select("acme:PageStamp", "acme:On") + Select("same:PageStamp", "same:Off"));
    twice.insert(twice.find("xmlns:acme"), "xmlns:same=\"" + std::string(kAcmeUri) + "\" ");
    const std::string found =
        "PageStamp twice, as acme:PageStamp and same:PageStamp: two prefixes of one namespace";
    for (const bool isTaken : {false, true}) {
        SCOPED_TRACE(isTaken);
        Use({isTaken ? "duplicates=first" : "duplicates=refuse"});
        EXPECT_EQ(isTaken, SUCCEEDED(Merge(twice, std::nullopt, kPTPageScope).result));
        EXPECT_EQ(isTaken, SUCCEEDED(Capabilities(twice).result));
        static_cast<void>(Merge(DefaultTicket(), twice, kPTPageScope));
        const std::string once = Ticket(Select("psk:PageX", "psk:A") + Select("psk:PageX", "psk:B"));
        static_cast<void>(Merge(once, std::nullopt, kPTPageScope));
        Close();
        const ProviderReport report = Report();
        ASSERT_EQ(5U, report.calls.size());
        EXPECT_EQ(found, report.calls[0].twoPrefixes);
        EXPECT_EQ(found, report.calls[1].twoPrefixes);
        EXPECT_EQ(std::nullopt, report.calls[2].twoPrefixes);
        EXPECT_EQ(std::nullopt, report.calls[3].twoPrefixes);
    }
}

TEST_F(ReportTest, AListenerHearsEachCallWhenItEnds) {
    Use({});
    std::vector<std::string> heard;
    m_provider.Listen([&](const ProviderCall& call) {
        // The call itself is not yet in the report.
        heard.push_back(call.function + " " + call.scope.value_or("-") + " after " +
                        std::to_string(Report().calls.size()));
    });
    static_cast<void>(Merge(DefaultTicket(), std::nullopt, kPTPageScope));
    static_cast<void>(Capabilities());
    m_provider.Listen(nullptr);
    static_cast<void>(Capabilities());
    EXPECT_EQ((std::vector<std::string>{"PTMergeAndValidatePrintTicket page after 0",
                                        "PTGetPrintCapabilities - after 1"}),
              heard);
}

TEST_F(ReportTest, CallsThatAreNotKeptAreToldAndCounted) {
    Json json = Json::parse(ConfigurationFor({}));
    json["record_calls"] = false;
    std::string error;
    ASSERT_EQ(S_OK, m_provider.Configure(json.dump().c_str(), error)) << error;
    std::vector<std::string> heard;
    m_provider.Listen([&](const ProviderCall& call) { heard.push_back(call.function); });
    DWORD version = 0;
    EXPECT_EQ(S_OK, m_provider.QuerySchemaVersionSupport(L"SimPrinter", &version));
    EXPECT_EQ(std::vector<std::string>{"PTQuerySchemaVersionSupport"}, heard);
    EXPECT_TRUE(Report().calls.empty());
    EXPECT_EQ((std::map<std::string, std::uint64_t>{{"PTQuerySchemaVersionSupport", 1}}), Report().counts);
    m_provider.Reset();
    EXPECT_TRUE(Report().counts.empty());
}

TEST_F(ReportTest, TellsTheTimeOfACallFromThatInTheStreamsOfItsCaller) {
    using std::chrono::milliseconds;
    constexpr milliseconds kSlow{60};
    constexpr milliseconds kStream{20};
    Use({"fault=slow:60"});
    std::chrono::nanoseconds told{0};
    m_provider.Listen([&](const ProviderCall& call) {
        std::this_thread::sleep_for(kSlow);
        told = call.own + call.inStreams;
    });
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto delta = MemoryStream::Make(Ticket(""));
    const auto output = MemoryStream::Make();
    for (const auto& stream : {base, delta, output}) stream->TakeTime(kStream);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(kNoConflict, m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), delta.Get(),
                                                                  kPTPageScope, output.Get(), nullptr));
    const auto end = std::chrono::steady_clock::now();
    m_provider.Listen(nullptr);
    const ProviderCall call = Report().calls.back();
    EXPECT_LE(start.time_since_epoch(), call.start);
    // A read of each ticket, one that finds its end, and a write.
    EXPECT_LE(5 * kStream, call.inStreams);
    EXPECT_LE(kSlow, call.own);
    EXPECT_EQ(told, call.own + call.inStreams);
    // The listener's time is in neither, nor is any time in both.
    EXPECT_LE(call.own + call.inStreams, end - start - kSlow);
}

TEST_F(ReportTest, TheTimeInTheStreamOfTheCapabilitiesIsNotTheProvidersOwn) {
    Use({});
    const auto ticket = MemoryStream::Make(DefaultTicket());
    const auto output = MemoryStream::Make();
    output->TakeTime(std::chrono::milliseconds(40));
    EXPECT_EQ(S_OK, m_provider.GetPrintCapabilities(m_handle, ticket.Get(), output.Get(), nullptr));
    EXPECT_LE(std::chrono::milliseconds(40), Report().calls.back().inStreams);
}

TEST(Messages, GoThroughTheirText) {
    ProviderReport report;
    report.configuration = ProviderConfiguration{"folder", {"a"}, {"k=v"}, {"slow:1"}};
    const ProviderCall call = {7,
                               "PTX",
                               3,
                               "job",
                               4,
                               true,
                               false,
                               E_ABORT,
                               "b",
                               "d",
                               "o",
                               {"ISOA4", "LongEdgeFirst"},
                               "e",
                               "X twice",
                               std::chrono::nanoseconds(5),
                               std::chrono::nanoseconds(6),
                               std::chrono::nanoseconds(7)};
    report.calls = {call, {}};
    report.counts = {{"PTX", 2}};
    report.openHandles = {{3, "a", 4}};
    report.breaches = {{"A00E", "text"}};
    report.notes = {"note"};
    const std::string text = WriteMessage(report);
    EXPECT_EQ(text, WriteMessage(ReadMessage<ProviderReport>(text)));
    EXPECT_EQ(text, WriteMessage(ReadMessage<ProviderReport>(Json::parse(text).dump(3))));
    const ProviderCall read = ReadMessage<ProviderReport>(text).calls[0];
    EXPECT_EQ(WriteMessage(call), WriteMessage(read));
    EXPECT_EQ(E_ABORT, read.result);
    EXPECT_EQ("LongEdgeFirst", read.facts.feedDirection);
    EXPECT_EQ(std::chrono::nanoseconds(5), read.start);
    EXPECT_EQ(std::chrono::nanoseconds(6), read.inStreams);
    EXPECT_EQ(std::chrono::nanoseconds(7), read.own);
}

TEST(Messages, AreRefusedWhenTheyAreNone) {
    EXPECT_THROW(static_cast<void>(ReadMessage<ProviderReport>("")), Json::exception);
    EXPECT_THROW(static_cast<void>(ReadMessage<ProviderReport>("{}")), Json::exception);
    std::string text = WriteMessage(ProviderCall());
    text.replace(text.find("0x00000000"), 10, "0x0000000g");
    EXPECT_THROW(static_cast<void>(ReadMessage<ProviderCall>(text)), std::invalid_argument);
}

}  // namespace
}  // namespace devkit::prntvpt
