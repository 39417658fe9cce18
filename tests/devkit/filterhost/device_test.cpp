#include <gtest/gtest.h>

#include <fstream>

#include "devkit/filterhost/devicecheck.h"
#include "devkit/filterhost/devicedescription.h"
#include "devkit/filterhost/files.h"
#include "devkit/filterhost/jsonlines.h"
#include "devkit/filterhost/program.h"

// `filterhost device`, and the example of the models' page.

namespace devkit::filterhost {
namespace {

using Path = std::filesystem::path;
using Lines = std::vector<std::string>;

class DeviceCheck : public testing::Test {
  protected:
    void SetUp() override {
        m_folder = FreshFolder("device");
        std::filesystem::copy(ProgramFolder() / "devices" / "simprinter", m_folder / "simprinter");
        std::filesystem::create_directories(m_folder / "mine");
    }
    // The faults of a model with this text, without the folder.
    Lines Faults(const std::string& json) {
        std::ofstream(m_folder / "mine" / "device.json", std::ios::binary) << json;
        Lines faults = CheckDevice(m_folder / "mine");
        const std::string folder = Text(m_folder / "mine") + "\\";
        for (std::string& fault : faults) {
            if (fault.starts_with(folder)) fault.erase(0, folder.size());
        }
        return faults;
    }

    Path m_folder;
};

TEST_F(DeviceCheck, NothingIsWrongWithTheModelsOfTheKit) {
    for (const auto& entry : std::filesystem::directory_iterator(ProgramFolder() / "devices")) {
        if (!entry.is_directory()) continue;
        EXPECT_EQ(Lines{}, CheckDevice(entry.path())) << entry.path();
    }
}

TEST_F(DeviceCheck, FindsMarginsThatCannotBe) {
    EXPECT_EQ(
        (Lines{"device.json:3: the right margin is negative: -4233",
               "device.json:4: the margins leave nothing of ISODLEnvelope"}),
        Faults("{ \"extends\": \"../simprinter\",\n"
               "  \"margins\": { \"left\": 1, \"top\": 1,\n"
               "    \"right\": -4233, \"bottom\": 1 },\n"
               "  \"option_margins\": { \"psk:ISODLEnvelope\": { \"left\": 60000, \"top\": 0, \"right\": "
               "50000, \"bottom\": 0 } } }"));
}

TEST_F(DeviceCheck, FindsWhatDoesNotExist) {
    EXPECT_EQ(
        (Lines{
            "device.json:2: there is no PageMediaSize Papyrus", "device.json:4: there is no feature PageMood",
            "device.json:5: there is no PageMediaType Papyrus",
            "device.json:6: there is no JobInputBin Papyrus", "device.json:7: no PageMediaSize has a Weight",
            "device.json:8: the list names no option", "device.json:9: there is no feature PageMood"}),
        Faults("{ \"extends\": \"../simprinter\", \"option_margins\": {\n"
               "  \"psk:Papyrus\": { \"left\": 0, \"top\": 0, \"right\": 0, \"bottom\": 0 } },\n"
               "  \"constraints\": [ { \"when\": {\n"
               "    \"feature\": \"psk:PageMood\", \"one_of\": [\"psk:Good\"] }, \"with\": {\n"
               "    \"feature\": \"psk:PageMediaType\", \"one_of\": [\"psk:Plain\", \"psk:Papyrus\"] },\n"
               "    \"set\": { \"feature\": \"psk:JobInputBin\", \"option\": \"psk:Papyrus\" } },\n"
               "  { \"when\": { \"feature\": \"psk:PageMediaSize\", \"scored_property\": \"psk:Weight\", "
               "\"above\": 1 },\n"
               "    \"with\": { \"feature\": \"psk:JobInputBin\", \"one_of\": [] },\n"
               "    \"set\": { \"feature\": \"psk:PageMood\", \"option\": \"psk:Bad\" } } ] }"));
}

TEST_F(DeviceCheck, FindsAConstraintThatDoesNotEnd) {
    EXPECT_EQ(
        (Lines{"device.json:4: the constraint holds on after PageOrientation is Portrait"}),
        Faults("{ \"extends\": \"../simprinter\", \"constraints\": [ {\n"
               "  \"when\": { \"feature\": \"psk:PageMediaType\", \"one_of\": [\"psk:Plain\"] },\n"
               "  \"with\": { \"feature\": \"psk:JobInputBin\", \"one_of\": [\"psk:Manual\"] },\n"
               "  \"set\": { \"feature\": \"psk:PageOrientation\", \"option\": \"psk:Portrait\" } } ] }"));
}

TEST_F(DeviceCheck, NamesTheLineOfWhatCannotBeRead) {
    EXPECT_EQ(Lines{"device.json:2: unknown key \"colour\""},
              Faults("{ \"extends\": \"../simprinter\",\n  \"colour\": true }"));
    EXPECT_EQ(
        Lines{"device.json:3: the prefix of \"abc:Papyrus\" is not declared by the capabilities"},
        Faults("{ \"extends\": \"../simprinter\",\n  \"option_margins\": {\n  \"abc:Papyrus\": { \"left\": "
               "0, \"top\": 0, \"right\": 0, \"bottom\": 0 } } }"));
    const Lines broken = Faults("{ \"extends\":\n \"../simprinter\",\n }");
    ASSERT_EQ(1U, broken.size());
    EXPECT_NE(std::string::npos, broken[0].find("line 3")) << broken[0];
}

TEST_F(DeviceCheck, FindsADefaultTicketThatTheDeviceWouldNotGive) {
    std::string ticket = FileBytes(m_folder / "simprinter" / "default-ticket.xml");
    const std::string portrait = "psk:Portrait";
    ticket.replace(ticket.find(portrait), portrait.size(), "psk:Upwards");
    std::ofstream(m_folder / "mine" / "default-ticket.xml", std::ios::binary) << ticket;
    EXPECT_EQ(Lines{"default-ticket.xml: PageOrientation is not what the device would select"},
              Faults("{ \"extends\": \"../simprinter\" }"));
    const std::string text = DescribeDevice(m_folder / "mine");
    EXPECT_NE(std::string::npos,
              text.find("what default-ticket.xml states instead:\n  psk:PageOrientation: psk:Upwards -> "
                        "psk:Portrait\n"))
        << text;
}

// The text between the first pair of fences of the models' page.
std::string ExampleOfThePage() {
    const std::string page = FileBytes(Path(SOURCE_FOLDER) / "devkit" / "devices" / "README.md");
    const std::string fence = "```json\n";
    const std::size_t start = page.find(fence) + fence.size();
    return page.substr(start, page.find("```", start) - start);
}

TEST_F(DeviceCheck, TheExampleOfThePageWorks) {
    const std::string example = ExampleOfThePage();
    const auto lines = std::count(example.begin(), example.end(), '\n');
    EXPECT_GE(25, lines);
    EXPECT_EQ(Lines{}, Faults(example));
    const std::string folder = Text(m_folder / "mine");
    const Ended shown = RunProgram({"device", "show", folder});
    EXPECT_EQ(0U, shown.status) << shown.error;
    EXPECT_TRUE(
        shown.out.starts_with("printers: Left Edge, Left Edge on the second floor\nmargins: left 0.0 mm, "))
        << shown.out;
    EXPECT_NE(std::string::npos,
              shown.out.find("  when psk:PageMediaType is one of psk:EnvelopePlain with "
                             "psk:JobDuplexAllDocumentsContiguously is one of psk:TwoSidedLongEdge, "
                             "psk:TwoSidedShortEdge: psk:JobDuplexAllDocumentsContiguously becomes "
                             "psk:OneSided\n"))
        << shown.out;
    EXPECT_NE(std::string::npos, shown.out.find("\n  psk:PageOrientation = psk:Portrait\n")) << shown.out;
    const Ended checked = RunProgram({"device", "check", folder});
    EXPECT_EQ(0U, checked.status);
    EXPECT_EQ(folder + ": nothing is wrong\n", checked.out);
    const Ended run =
        RunProgram(RunArguments({Text(Sample("minimal.xps")), "--no-output", "--device", folder}));
    EXPECT_EQ(0U, run.status) << run.error;
}

TEST_F(DeviceCheck, TheProgramTellsEachFaultAndFails) {
    std::ofstream(m_folder / "mine" / "device.json")
        << "{ \"extends\": \"../simprinter\", \"margins\": { \"left\": -1, \"top\": -2, \"right\": 0, "
           "\"bottom\": 0 } }";
    const Ended ended = RunProgram({"device", "check", Text(m_folder / "mine")});
    EXPECT_EQ(3U, ended.status);
    EXPECT_EQ("", ended.out);
    const std::string start = "filterhost: " + Text(m_folder / "mine") + "\\device.json:1: the ";
    EXPECT_EQ(start + "left margin is negative: -1\n" + start + "top margin is negative: -2\n", ended.error);
}

TEST(JsonLines, OfMembersAndElements) {
    const auto lines = LinesOf("{\n\"a\": 1\n,\n\"b\": [\n 2,\n {\"c\":\n null} ],\n\"d\": \"x\"}");
    const std::map<std::string, std::size_t> expected{{"/a", 2},   {"/b", 4},     {"/b/0", 5},
                                                      {"/b/1", 6}, {"/b/1/c", 6}, {"/d", 8}};
    EXPECT_EQ(expected, lines);
    EXPECT_TRUE(LinesOf("{").empty());
}

}  // namespace
}  // namespace devkit::filterhost
