#include <set>

#include "devkit/prntvpt/api/configuration.h"
#include "providertest.h"
#include "ticketsummary.h"

namespace devkit::prntvpt {
namespace {

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
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()),
              (std::set<std::string>{"asymmetric", "longedge", "shortedge", "simprinter", "simprinter-us"}));
}

TEST_P(DeviceModelTest, DefaultTicketIsAFixpointAtJobScope) {
    Use({}, GetParam());
    const WrittenResult merged = Merge(DefaultTicket(), std::nullopt);
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(merged.bytes, DefaultTicket());
    EXPECT_EQ(merged.error, std::nullopt);
}

TEST_P(DeviceModelTest, NarrowerScopesAreFixpointsToo) {
    Use({}, GetParam());
    for (const EPrintTicketScope scope : {kPTDocumentScope, kPTPageScope}) {
        const WrittenResult merged = Merge(DefaultTicket(), std::nullopt, scope);
        EXPECT_EQ(merged.result, NoConflict);
        const WrittenResult again = Merge(merged.bytes, std::nullopt, scope);
        EXPECT_EQ(again.result, NoConflict);
        EXPECT_EQ(again.bytes, merged.bytes);
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
    EXPECT_EQ(Default(kPTPageScope, "simprinter"),
              (std::vector<std::string>{
                  "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]",
                  "psk:PageMediaType[psk:Plain]", "psk:PageOrientation[psk:Portrait]",
                  "psk:PageOutputColor[psk:Color(psk:DeviceBitsPerPixel=24,psk:DriverBitsPerPixel=24)]",
                  "psk:PageResolution[dev:R600(psk:ResolutionX=600,psk:ResolutionY=600)]",
                  "psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}"}));
}

TEST_F(SampleDeviceTest, DocumentScopeAddsCollation) {
    const std::vector<std::string> lines = Default(kPTDocumentScope, "simprinter");
    ASSERT_EQ(lines.size(), 7U);
    EXPECT_EQ(lines[0], "psk:DocumentCollate[psk:Collated]");
}

TEST_F(SampleDeviceTest, JobScopeHasElevenFeaturesAndTheCopies) {
    const std::vector<std::string> lines = Default(kPTJobScope, "simprinter");
    ASSERT_EQ(lines.size(), 12U);
    EXPECT_EQ(lines[0], "psk:JobCopiesAllDocuments=1");
    EXPECT_EQ(lines[1], "psk:JobDuplexAllDocumentsContiguously[psk:OneSided]");
    EXPECT_EQ(lines[2], "psk:JobInputBin[psk:AutoSelect]");
    EXPECT_EQ(lines[3],
              "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=1)]"
              "{psk:PresentationDirection[psk:RightBottom]}");
    EXPECT_EQ(lines[11], "dev:JobTonerSave[dev:Off]");
}

TEST_F(SampleDeviceTest, UsModelStartsWithLetter) {
    EXPECT_EQ(
        Default(kPTPageScope, "simprinter-us")[0],
        "psk:PageMediaSize[psk:NorthAmericaLetter(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]");
}

TEST_F(SampleDeviceTest, EdgeFeedersStateTheirDirectionWithAPublicBin) {
    EXPECT_EQ(Default(kPTJobScope, "longedge")[2],
              "psk:JobInputBin[psk:Cassette(psk:BinType=psk:SheetFeed,psk:FeedDirection=psk:LongEdgeFirst)]");
    EXPECT_EQ(Default(kPTJobScope, "shortedge")[2],
              "psk:JobInputBin[psk:AutoSelect(psk:FeedDirection=psk:ShortEdgeFirst)]");
}

}  // namespace
}  // namespace devkit::prntvpt
