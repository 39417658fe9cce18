#include "devkit/prntvpt/api/configuration.h"

#include <fstream>

#include <nlohmann/json.hpp>

#include "platform/utf.h"
#include "providertest.h"
#include "thrown.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace tests;

using Json = nlohmann::json;

[[nodiscard]] std::string Refusal(const std::string& json) {
    return ::tests::MessageOf<ConfigurationError>([&] { static_cast<void>(ParseConfiguration(json)); });
}

[[nodiscard]] Json Plain() { return Json::parse(ConfigurationFor({})); }

// A folder for a device model of the test's own.
class ModelTest : public testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    void Write(const char* name, const std::string& text) const {
        std::ofstream(m_folder / name, std::ios::binary) << text;
    }
    // A model that extends SimPrinter with these keys.
    void Extend(Json keys) const {
        keys["extends"] = platform::ToUtf8(DeviceFolder("simprinter").native());
        Write("device.json", keys.dump());
    }
    // What is said of the model, without the folder's path.
    [[nodiscard]] std::string Problem() const {
        std::string text = Refusal(Json{{"device", platform::ToUtf8(m_folder.native())}}.dump());
        const std::string folder = platform::ToUtf8(m_folder.native());
        if (const std::size_t at = text.find(folder); at != std::string::npos)
            text.erase(at, folder.size() + 1);
        return text;
    }

    const std::filesystem::path m_folder = std::filesystem::temp_directory_path() / "devicemodel_test";
};

TEST(Configuration, NeedsADeviceAndNothingElse) {
    const auto configuration = ParseConfiguration(ConfigurationFor({}));
    EXPECT_EQ((std::vector<std::string>{"SimPrinter"}), configuration->device.printers);
    EXPECT_TRUE(configuration->recordTickets);
    EXPECT_TRUE(configuration->recordCalls);
    EXPECT_EQ(DescribeSwitches(Switches()), DescribeSwitches(configuration->behaviour));
    EXPECT_TRUE(configuration->pFaults->Faults().empty());
}

TEST(Configuration, SetsSwitchesAndFaults) {
    const auto configuration = ParseConfiguration(
        ConfigurationFor({"private=all", "fault=merge-fail@2", "private=strict", "fault=s-ok"}));
    EXPECT_EQ(PrivateNames::Strict, configuration->behaviour.privateNames);
    ASSERT_EQ(2U, configuration->pFaults->Faults().size());
    EXPECT_EQ(FaultMode::MergeFail, configuration->pFaults->Faults()[0].mode);
    EXPECT_EQ(FaultMode::PlainSuccess, configuration->pFaults->Faults()[1].mode);
}

TEST(Configuration, PrintersReplaceTheModels) {
    Json json = Plain();
    json["printers"] = {"\\\\server\\Queue \xC3\x84"};
    json["record_tickets"] = false;
    json["record_calls"] = false;
    const auto configuration = ParseConfiguration(json.dump());
    EXPECT_TRUE(configuration->HasPrinter(L"\\\\SERVER\\queue \u00E4"));
    EXPECT_FALSE(configuration->HasPrinter(L"SimPrinter"));
    EXPECT_FALSE(configuration->recordTickets);
    EXPECT_FALSE(configuration->recordCalls);
}

TEST(Configuration, RefusesWhatItDoesNotKnow) {
    Json json = Plain();
    json["switch"] = "x";
    EXPECT_EQ("unknown key \"switch\" in the configuration", Refusal(json.dump()));
    EXPECT_EQ("the configuration is not an object", Refusal("[]"));
    EXPECT_EQ("\"private\" is not KEY=VALUE", Refusal(ConfigurationFor({"private"})));
    EXPECT_EQ("there is no switch \"colour\"", Refusal(ConfigurationFor({"colour=1"})));
    EXPECT_EQ("fault merge: there is no such mode", Refusal(ConfigurationFor({"fault=merge"})));
    EXPECT_NE("", Refusal("{"));
    EXPECT_NE("", Refusal("{}"));
    EXPECT_NE("", Refusal(R"({"device": 5})"));
}

TEST_F(ModelTest, MissingModelIsNamed) {
    EXPECT_EQ("device.json: cannot be read", Problem());
    Write("device.json", R"({"printers": ["P"]})");
    EXPECT_EQ("capabilities.xml: cannot be read", Problem());
}

TEST_F(ModelTest, ExtensionTakesWhatIsMissingFromTheOtherModel) {
    Extend({{"printers", {"Mine"}}, {"margins", {{"left", 1}, {"top", 2}, {"right", 3}, {"bottom", 4}}}});
    const auto configuration =
        ParseConfiguration(Json{{"device", platform::ToUtf8(m_folder.native())}}.dump());
    EXPECT_EQ((std::vector<std::string>{"Mine"}), configuration->device.printers);
    EXPECT_EQ(4, configuration->device.margins.bottom);
    EXPECT_EQ(2U, configuration->device.optionMargins.size());
    EXPECT_EQ(5U, configuration->device.constraints.size());
}

TEST_F(ModelTest, KeysOfTheExtensionReplaceTheOtherModels) {
    Json constraint = Json::parse(ReadFile(DeviceFolder("simprinter") / "device.json"))["constraints"][3];
    Extend({{"constraints", {constraint}}, {"option_margins", Json::object()}});
    const auto configuration =
        ParseConfiguration(Json{{"device", platform::ToUtf8(m_folder.native())}}.dump());
    EXPECT_EQ(1U, configuration->device.constraints.size());
    EXPECT_EQ(0U, configuration->device.optionMargins.size());
    EXPECT_EQ((std::vector<std::string>{"SimPrinter"}), configuration->device.printers);
}

TEST_F(ModelTest, VariantsOfTheModelComeBeforeTheCallers) {
    Extend({{"variants", {"bins=page", "us=1"}}});
    Json json{{"device", platform::ToUtf8(m_folder.native())}, {"switches", {"us=0"}}};
    const auto configuration = ParseConfiguration(json.dump());
    EXPECT_EQ(BinScope::Page, configuration->behaviour.variants.bins);
    EXPECT_FALSE(configuration->behaviour.variants.letterDefault);
}

TEST_F(ModelTest, WhatIsWrongInTheModelIsSaid) {
    Extend({{"colour", 1}});
    EXPECT_EQ("device.json: unknown key \"colour\"", Problem());
    Extend({{"margins", {{"left", 1}, {"under", 2}}}});
    EXPECT_EQ("device.json: unknown key \"under\"", Problem());
    Extend({{"option_margins", {{"x:Size", {{"left", 1}, {"top", 2}, {"right", 3}, {"bottom", 4}}}}}});
    EXPECT_EQ("device.json: the prefix of \"x:Size\" is not declared by the capabilities", Problem());
    Extend({{"printers", Json::array()}});
    EXPECT_EQ("device.json: no printers are named", Problem());
    Write("device.json", "{");
    EXPECT_EQ("device.json: ", Problem().substr(0, 13));
}

TEST_F(ModelTest, ModelsThatExtendEachOtherEnd) {
    Write("device.json", R"({"extends": "."})");
    EXPECT_EQ("device.json: too many models extend each other", Problem());
}

TEST_F(ModelTest, DocumentsOfTheModelAreChecked) {
    Extend({{"printers", {"Mine"}}});
    Write("capabilities.xml", Ticket(""));
    EXPECT_EQ("capabilities.xml: The root element is not PrintCapabilities", Problem());
    std::filesystem::remove(m_folder / "capabilities.xml");
    Write("default-ticket.xml", "<a>");
    EXPECT_EQ("default-ticket.xml: is not well-formed XML (line 1: The markup breaks off)", Problem());
}

TEST_F(ModelTest, DefaultTicketMustBeWhatTheDeviceWouldSelect) {
    const std::string ticket = ReadFile(DeviceFolder("simprinter") / "default-ticket.xml");
    const auto replaced = [&](const std::string& from, const std::string& to) {
        std::string text = ticket;
        return text.replace(text.find(from), from.size(), to);
    };
    Extend({{"printers", {"Mine"}}});
    Write("default-ticket.xml", replaced("psk:Portrait", "psk:Sideways"));
    EXPECT_EQ("default-ticket.xml: PageOrientation is not what the device would select", Problem());
    Write("default-ticket.xml", replaced(">210000<", ">210001<"));
    EXPECT_EQ("default-ticket.xml: PageMediaSize is not what the device would select", Problem());
    Write("default-ticket.xml",
          replaced(R"(<psf:Feature name="psk:PageMediaType"><psf:Option name="psk:Plain"/></psf:Feature>)",
                   ""));
    EXPECT_EQ("default-ticket.xml: PageMediaType is not what the device would select", Problem());
    Write("default-ticket.xml", Ticket(""));
    EXPECT_EQ("default-ticket.xml: JobCopiesAllDocuments is not what the device would select", Problem());
}

TEST_F(ModelTest, VariantThatTheModelCannotHaveIsSaid) {
    const std::string capabilities = ReadFile(DeviceFolder("simprinter") / "capabilities.xml");
    std::string text = capabilities;
    const std::string letter = "psk:NorthAmericaLetter";
    text.replace(text.find(letter), letter.size(), "psk:NorthAmericaNote");
    Extend({{"printers", {"Mine"}}, {"variants", {"us=1"}}});
    Write("capabilities.xml", text);
    EXPECT_EQ("us=1: the device has no NorthAmericaLetter", Problem());
}

}  // namespace
}  // namespace devkit::prntvpt
