#include "devkit/prntvpt/api/report.h"

#include <nlohmann/json.hpp>

#include "memorystream.h"
#include "providertest.h"
#include "ticketsummary.h"

namespace devkit::prntvpt {
namespace {

using Json = nlohmann::json;

class ReportTest : public ProviderTest {
  protected:
    [[nodiscard]] Json Read() const { return Json::parse(m_provider.Report()); }
};

TEST_F(ReportTest, BeginsEmptyWithoutConfiguration) {
    EXPECT_EQ(Read(), (Json{{"configuration", nullptr},
                            {"calls", Json::array()},
                            {"counts", Json::object()},
                            {"open_handles", Json::array()},
                            {"breaches", Json::array()},
                            {"notes", Json::array()}}));
}

TEST_F(ReportTest, WithoutConfigurationThereIsNoPrinter) {
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, &handle), NoSuchPrinter);
    EXPECT_EQ(DefaultTicket(), "");
}

TEST_F(ReportTest, StatesEverySwitchSoThatARunCanBeRepeated) {
    Use({"private=strict", "fault=slow:1@100"});
    const Json configuration = Read()["configuration"];
    EXPECT_EQ(configuration["printers"], Json({"SimPrinter"}));
    EXPECT_EQ(configuration["faults"], Json({"slow:1@100"}));
    EXPECT_EQ(configuration["switches"].size(), 21U);
    EXPECT_EQ(configuration["switches"][0], "private=strict");
    std::vector<std::string> switches = configuration["switches"].get<std::vector<std::string>>();
    std::string error;
    EXPECT_EQ(m_provider.Configure(ConfigurationFor(switches).c_str(), error), S_OK) << error;
}

TEST_F(ReportTest, CallsStandInOrderWithWhatTheyWereGivenAndGaveBack) {
    Use({});
    const std::string base = DefaultTicket();
    const WrittenResult merged = Merge("\xEF\xBB\xBF" + base, Ticket(""), kPTDocumentScope);
    const WrittenResult refused = Merge("<a>", std::nullopt, kPTPageScope);
    const WrittenResult capabilities = Capabilities();
    Close();
    const ProviderReport report = Report();
    ASSERT_EQ(report.calls.size(), 4U);
    const ProviderCall& first = report.calls[0];
    EXPECT_EQ(first.function, "PTMergeAndValidatePrintTicket");
    EXPECT_EQ(first.scope, "document");
    EXPECT_EQ(first.thread, GetCurrentThreadId());
    EXPECT_EQ(first.result, NoConflict);
    EXPECT_EQ(first.base, base);
    EXPECT_EQ(first.delta, Ticket(""));
    EXPECT_EQ(first.output, merged.bytes);
    EXPECT_EQ(first.error, std::nullopt);
    const ProviderCall& second = report.calls[1];
    EXPECT_EQ(second.scope, "page");
    EXPECT_EQ(second.handle, first.handle);
    EXPECT_EQ(second.result, BadBase);
    EXPECT_EQ(second.base, "<a>");
    EXPECT_EQ(second.delta, std::nullopt);
    EXPECT_EQ(second.output, std::nullopt);
    EXPECT_EQ(second.error, "Base ticket: line 1: Premature end of data in tag a line 1");
    const ProviderCall& third = report.calls[2];
    EXPECT_EQ(third.function, "PTGetPrintCapabilities");
    EXPECT_EQ(third.scope, std::nullopt);
    EXPECT_EQ(third.result, S_OK);
    EXPECT_EQ(third.base, std::nullopt);
    EXPECT_EQ(third.output, capabilities.bytes);
    EXPECT_EQ(report.calls[3].function, "PTCloseProvider");
    EXPECT_EQ(report.counts, (std::map<std::string, std::uint64_t>{{"PTCloseProvider", 1},
                                                                   {"PTGetPrintCapabilities", 1},
                                                                   {"PTMergeAndValidatePrintTicket", 2}}));
    EXPECT_TRUE(report.openHandles.empty());
}

TEST_F(ReportTest, WideAndBrokenTextsAreReadable) {
    Use({"encoding=utf16le"});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    static_cast<void>(Merge("<a>\xFF</a>", std::nullopt));
    const ProviderReport report = Report();
    EXPECT_TRUE(report.calls[0].base->starts_with("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"));
    EXPECT_TRUE(report.calls[0].output->starts_with("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"));
    EXPECT_EQ(report.calls[1].base, "<a>\xEF\xBF\xBD</a>");
}

TEST_F(ReportTest, TicketsCanBeLeftOut) {
    Json json = Json::parse(ConfigurationFor({}));
    json["record_tickets"] = false;
    std::string error;
    ASSERT_EQ(m_provider.Configure(json.dump().c_str(), error), S_OK);
    ASSERT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, &m_handle), S_OK);
    static_cast<void>(Merge(DefaultTicket(), Ticket("")));
    static_cast<void>(Capabilities(DefaultTicket()));
    for (const ProviderCall& call : Report().calls) {
        EXPECT_EQ(call.base, std::nullopt);
        EXPECT_EQ(call.delta, std::nullopt);
        EXPECT_EQ(call.output, std::nullopt);
    }
}

TEST_F(ReportTest, ResetForgetsCallsButNoHandles) {
    Use({});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    m_provider.Reset();
    EXPECT_TRUE(Report().calls.empty());
    EXPECT_EQ(Report().openHandles.size(), 1U);
    EXPECT_EQ(Merge(DefaultTicket(), std::nullopt).result, NoConflict);
}

TEST_F(ReportTest, ConfigureStartsANewReportAndOldHandlesKeepTheirDevice) {
    Use({});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    std::string error;
    ASSERT_EQ(m_provider.Configure(ConfigurationFor({}, "longedge").c_str(), error), S_OK);
    EXPECT_TRUE(Report().calls.empty());
    EXPECT_EQ(Summarize(Merge(Ticket(""), std::nullopt).bytes).size(), 12U);
    HPTPROVIDER handle = nullptr;
    EXPECT_EQ(m_provider.OpenProvider(L"SimPrinter", 1, &handle), NoSuchPrinter);
}

TEST_F(ReportTest, FailedConfigureChangesNothing) {
    Use({"us=1"});
    static_cast<void>(Merge(DefaultTicket(), std::nullopt));
    std::string error;
    EXPECT_EQ(m_provider.Configure("{}", error), E_INVALIDARG);
    EXPECT_NE(error, "");
    EXPECT_EQ(m_provider.Configure(nullptr, error), E_INVALIDARG);
    EXPECT_EQ(error, "there is no configuration");
    EXPECT_EQ(Report().calls.size(), 1U);
    EXPECT_NE(DefaultTicket().find("NorthAmericaLetter"), std::string::npos);
}

TEST_F(ReportTest, WhatIsNotImplementedIsCounted) {
    EXPECT_EQ(m_provider.NotImplemented("PTConvertDevModeToPrintTicket"), E_NOTIMPL);
    EXPECT_EQ(Report().counts.at("PTConvertDevModeToPrintTicket"), 1U);
    EXPECT_EQ(Report().calls[0].result, E_NOTIMPL);
}

TEST(ParseProviderReport, RefusesWhatIsNone) {
    EXPECT_ANY_THROW(static_cast<void>(ParseProviderReport("")));
    EXPECT_ANY_THROW(static_cast<void>(ParseProviderReport("{}")));
}

}  // namespace
}  // namespace devkit::prntvpt
