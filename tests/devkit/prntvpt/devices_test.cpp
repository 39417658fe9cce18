#include <set>

#include "devkit/prntvpt/api/configuration.h"
#include "providertest.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace tests;

// Every folder of devkit/devices.
class DeviceModelTest : public ProviderTest, public testing::WithParamInterface<std::string> {};

std::vector<std::string> Models() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(DeviceFolder(""))) {
        if (entry.is_directory()) names.push_back(entry.path().filename().string());
    }
    return names;
}

TEST(Devices, AreTheFiveOfTheKit) {
    const std::vector<std::string> names = Models();
    EXPECT_EQ((std::set<std::string>{"asymmetric", "longedge", "shortedge", "simprinter", "simprinter-us"}),
              std::set<std::string>(names.begin(), names.end()));
}

TEST_P(DeviceModelTest, DefaultTicketIsAFixpointAtJobScope) {
    Use({}, GetParam());
    const WrittenResult merged = Merge(DefaultTicket(), std::nullopt);
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(DefaultTicket(), merged.bytes);
    EXPECT_EQ(std::nullopt, merged.error);
}

TEST_P(DeviceModelTest, NarrowerScopesAreFixpointsToo) {
    Use({}, GetParam());
    for (const EPrintTicketScope scope : {kPTDocumentScope, kPTPageScope}) {
        const WrittenResult merged = Merge(DefaultTicket(), std::nullopt, scope);
        EXPECT_EQ(kNoConflict, merged.result);
        const WrittenResult again = Merge(merged.bytes, std::nullopt, scope);
        EXPECT_EQ(kNoConflict, again.result);
        EXPECT_EQ(merged.bytes, again.bytes);
    }
}

INSTANTIATE_TEST_SUITE_P(All, DeviceModelTest, testing::ValuesIn(Models()), [](const auto& model) {
    std::string name = model.param;
    std::erase(name, '-');
    return name;
});

class SampleDeviceTest : public ProviderTest {
  protected:
    [[nodiscard]] std::vector<std::string> Default(EPrintTicketScope scope, const char* device) {
        Use({}, device);
        return Summarize(Merge(DefaultTicket(), std::nullopt, scope).bytes);
    }
};

TEST_F(SampleDeviceTest, PageScopeHasSixFeatures) {
    EXPECT_EQ((std::vector<std::string>{
                  "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]",
                  "psk:PageMediaType[psk:Plain]", "psk:PageOrientation[psk:Portrait]",
                  "psk:PageOutputColor[psk:Color(psk:DeviceBitsPerPixel=24,psk:DriverBitsPerPixel=24)]",
                  "psk:PageResolution[dev:R600(psk:ResolutionX=600,psk:ResolutionY=600)]",
                  "psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}"}),
              Default(kPTPageScope, "simprinter"));
}

TEST_F(SampleDeviceTest, DocumentScopeAddsCollation) {
    const std::vector<std::string> lines = Default(kPTDocumentScope, "simprinter");
    ASSERT_EQ(7U, lines.size());
    EXPECT_EQ("psk:DocumentCollate[psk:Collated]", lines[0]);
}

TEST_F(SampleDeviceTest, JobScopeHasElevenFeaturesAndTheCopies) {
    const std::vector<std::string> lines = Default(kPTJobScope, "simprinter");
    ASSERT_EQ(12U, lines.size());
    EXPECT_EQ("psk:JobCopiesAllDocuments=1", lines[0]);
    EXPECT_EQ("psk:JobDuplexAllDocumentsContiguously[psk:OneSided]", lines[1]);
    EXPECT_EQ("psk:JobInputBin[psk:AutoSelect]", lines[2]);
    EXPECT_EQ(
        "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=1)]"
        "{psk:PresentationDirection[psk:RightBottom]}",
        lines[3]);
    EXPECT_EQ("dev:JobTonerSave[dev:Off]", lines[11]);
}

TEST_F(SampleDeviceTest, UsModelStartsWithLetter) {
    EXPECT_EQ(
        "psk:PageMediaSize[psk:NorthAmericaLetter(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]",
        Default(kPTPageScope, "simprinter-us")[0]);
}

TEST_F(SampleDeviceTest, EdgeFeedersStateTheirDirectionWithAPublicBin) {
    EXPECT_EQ("psk:JobInputBin[psk:Cassette(psk:BinType=psk:SheetFeed,psk:FeedDirection=psk:LongEdgeFirst)]",
              Default(kPTJobScope, "longedge")[2]);
    EXPECT_EQ("psk:JobInputBin[psk:AutoSelect(psk:FeedDirection=psk:ShortEdgeFirst)]",
              Default(kPTJobScope, "shortedge")[2]);
}

}  // namespace
}  // namespace devkit::prntvpt
