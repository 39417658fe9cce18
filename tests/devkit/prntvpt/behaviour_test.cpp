#include <cctype>

#include "devkit/printschema/reader.h"
#include "providertest.h"
#include "tickets.h"

// The switches for what the documentation of print ticket validation leaves open.

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

using Lines = std::vector<std::string>;

class BehaviourTest : public ProviderTest {};

TEST_F(BehaviourTest, StrictRemovesTheDevicesOwnFeaturesToo) {
    Use({"private=strict"});
    const WrittenResult merged =
        MergeWithDefault(Ticket(Select("dev:JobTonerSave", "dev:On") + Select("acme:PageStamp", "acme:On") +
                                Select("psk:JobInputBin", "dev:Tray1")));
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ("", Line(merged.bytes, "JobTonerSave"));
    EXPECT_EQ("", Line(merged.bytes, "PageStamp"));
    EXPECT_EQ("psk:JobInputBin[dev:Tray1(", Line(merged.bytes, "JobInputBin").substr(0, 26));
    EXPECT_EQ(11U, Summarize(merged.bytes).size());
}

TEST_F(BehaviourTest, StrictOptionsRemovesPrivateOptionsOfPublicFeatures) {
    Use({"private=strict", "strict=options"});
    EXPECT_EQ("psk:JobInputBin[psk:AutoSelect]",
              LineAfter(Select("psk:JobInputBin", "dev:Tray1"), "JobInputBin", kNoConflict));
    // The device has no public resolution.
    EXPECT_EQ("", LineAfter("", "PageResolution", kNoConflict));
}

TEST_F(BehaviourTest, StrictOptionsWithoutStrictDoesNothing) {
    Use({"strict=options"});
    EXPECT_EQ("psk:JobInputBin[dev:Tray1(",
              LineAfter(Select("psk:JobInputBin", "dev:Tray1"), "JobInputBin", kNoConflict).substr(0, 26));
}

TEST_F(BehaviourTest, AllKeepsForeignEntriesUntouchedAtTheEnd) {
    Use({"private=all"});
    const std::string foreign =
        Select("acme:PageStamp", "acme:Secret", R"(<psf:Property name="psk:DisplayName"><psf:Value
 xsi:type="xsd:string">Secret</psf:Value></psf:Property>)") +
        R"(<psf:ParameterInit name="acme:PageStampAngle"><psf:Value xsi:type="xsd:integer">45</psf:Value>
</psf:ParameterInit><psf:Property name="acme:JobOwner"><psf:Value>me</psf:Value></psf:Property>)";
    const WrittenResult merged = MergeWithDefault(Ticket(foreign));
    EXPECT_EQ(kNoConflict, merged.result);
    Lines expected = Summarize(DefaultTicket());
    expected.insert(expected.end(), {"acme:PageStamp[acme:Secret(#psk:DisplayName=Secret)]",
                                     "acme:PageStampAngle=45", "#acme:JobOwner=me"});
    EXPECT_EQ(expected, Summarize(merged.bytes));
}

TEST_F(BehaviourTest, AllStillKeepsToTheScope) {
    Use({"private=all"});
    EXPECT_EQ("", LineAfter(Select("acme:JobStamp", "acme:On"), "JobStamp", kNoConflict, kPTPageScope));
}

TEST_F(BehaviourTest, DropIsConflictCountsForeignEntries) {
    Use({"drop-is-conflict=1"});
    EXPECT_EQ("", LineAfter(Select("acme:PageStamp", "acme:On"), "PageStamp", kConflictResolved));
    EXPECT_EQ("", LineAfter(Select("psk:PageOrientation", "psk:Landscape"), "PageStamp", kNoConflict));
}

TEST_F(BehaviourTest, DuplicatesFirstKeepsTheFirst) {
    const std::string two =
        Select("psk:PageOrientation", "psk:Landscape") + Select("psk:PageOrientation", "psk:Portrait");
    Use({"duplicates=first"});
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]", LineAfter(two, "PageOrientation", kNoConflict));
    Use({"duplicates=refuse"});
    const WrittenResult refused = MergeWithDefault(Ticket(two));
    EXPECT_EQ(kBadDelta, refused.result);
    EXPECT_EQ(L"Delta ticket: Duplicate definitions exist for feature or parameter PageOrientation",
              refused.error);
}

TEST_F(BehaviourTest, OrphansPruneRemovesParametersWithoutReference) {
    const std::string scale =
        R"(<psf:ParameterInit name="psk:PageScalingScale"><psf:Value xsi:type="xsd:integer">50</psf:Value>
</psf:ParameterInit>)";
    Use({"orphans=prune"});
    EXPECT_EQ("", LineAfter(scale, "PageScalingScale", kNoConflict));
    EXPECT_EQ("psk:PageScalingScale=50", LineAfter(scale + Select("psk:PageScaling", "psk:CustomSquare"),
                                                   "PageScalingScale", kNoConflict));
    EXPECT_EQ("psk:JobCopiesAllDocuments=1", LineAfter(scale, "JobCopiesAllDocuments", kNoConflict));
}

TEST_F(BehaviourTest, FallbackNearestTakesTheSheetOfTheNearestSize) {
    Use({"fallback=nearest"});
    EXPECT_EQ(
        "psk:PageMediaSize[psk:NorthAmericaLegal(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=355600)]",
        LineAfter(Sheet("psk:ISOA3", 297000, 420000), "PageMediaSize", kConflictResolved));
    EXPECT_EQ("psk:PageMediaSize[psk:ISODLEnvelope(psk:MediaSizeWidth=110000,psk:MediaSizeHeight=220000)]",
              LineAfter(Sheet("dev:Stamp", 20000, 30000), "PageMediaSize", kConflictResolved));
    // Without numbers there is no nearest.
    EXPECT_EQ("psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]",
              LineAfter(Select("psk:PageMediaSize", "psk:ISOA3"), "PageMediaSize", kConflictResolved));
    // Other features have none either.
    EXPECT_EQ("psk:PageOrientation[psk:Portrait]",
              LineAfter(Select("psk:PageOrientation", "psk:Sideways"), "PageOrientation", kConflictResolved));
}

TEST_F(BehaviourTest, OptionPropertiesOfAPerfectMatchCanBeKept) {
    const std::string property =
        R"(<psf:Property name="psk:DisplayName"><psf:Value xsi:type="xsd:string">x</psf:Value></psf:Property>)";
    const std::string foreign =
        R"(<psf:Property name="acme:DisplayName"><psf:Value xsi:type="xsd:string">x</psf:Value></psf:Property>)";
    Use({"option-props=keep-perfect"});
    EXPECT_EQ("psk:PageOrientation[psk:Landscape(#psk:DisplayName=x)]",
              LineAfter(Select("psk:PageOrientation", "psk:Landscape", property + foreign), "PageOrientation",
                        kNoConflict));
    // The name alone is no perfect match.
    const std::string wrongSize =
        R"(<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">1</psf:Value>
</psf:ScoredProperty>)";
    EXPECT_EQ("psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]",
              LineAfter(Select("psk:PageMediaSize", "psk:ISOA4", wrongSize + property), "PageMediaSize",
                        kNoConflict));
    EXPECT_EQ("psk:PageOrientation[psk:Portrait]",
              LineAfter(Select("psk:PageOrientation", "psk:Sideways", property), "PageOrientation",
                        kConflictResolved));
}

TEST_F(BehaviourTest, OrderInputKeepsTheOrderOfTheTicket) {
    Use({"order=input"});
    const std::string base =
        Ticket(R"(<psf:Property name="psk:JobName"><psf:Value>x</psf:Value></psf:Property>)" +
               Select("psk:PageOrientation", "psk:Landscape") + Select("psk:JobInputBin", "psk:AutoSelect"));
    const Lines lines = Summarize(Merge(base, Ticket(Select("psk:PageMediaType", "psk:Plain"))).bytes);
    ASSERT_EQ(13U, lines.size());
    EXPECT_EQ("#psk:JobName=x", lines[0]);
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]", lines[1]);
    EXPECT_EQ("psk:JobInputBin[psk:AutoSelect]", lines[2]);
    EXPECT_EQ("psk:PageMediaType[psk:Plain]", lines[3]);
    EXPECT_EQ("psk:JobCopiesAllDocuments=1", lines[4]);
    EXPECT_EQ("psk:JobDuplexAllDocumentsContiguously[psk:OneSided]", lines[5]);
}

TEST_F(BehaviourTest, OrderReversedTurnsEveryLevel) {
    Use({"order=reversed"});
    const Lines lines = Summarize(MergeWithDefault(Ticket("")).bytes);
    ASSERT_EQ(12U, lines.size());
    EXPECT_EQ("dev:JobTonerSave[dev:Off]", lines[0]);
    EXPECT_EQ("psk:PageScaling{psk:ScaleOffsetAlignment[psk:Center]}[psk:None]", lines[1]);
    EXPECT_EQ("psk:PageMediaSize[psk:ISOA4(psk:MediaSizeHeight=297000,psk:MediaSizeWidth=210000)]", lines[6]);
    EXPECT_EQ("psk:JobCopiesAllDocuments=1", lines[11]);
}

// Settings and documents, not text: every way of writing gives the same ticket.
class WritingTest : public BehaviourTest, public testing::WithParamInterface<const char*> {};

TEST_P(WritingTest, GivesTheSameTicketAndTheSameCapabilities) {
    const std::string delta =
        Ticket(Select("psk:PageOrientation", "psk:Landscape") + Select("psk:JobInputBin", "dev:Tray1") +
               R"(<psf:Property name="psk:JobName"><psf:Value xsi:type="xsd:string">&lt;&amp;"ü</psf:Value>
</psf:Property>)");
    Use({});
    const Lines expected = Summarize(MergeWithDefault(delta).bytes);
    const Lines capabilities =
        Summarize(ReadFramework(Capabilities(delta).bytes, Tag::PrintCapabilities).root);
    ASSERT_EQ("#psk:JobName=<&\"\xC3\xBC", expected.back());

    Use({GetParam()});
    const WrittenResult merged = MergeWithDefault(delta);
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(expected, Summarize(merged.bytes));
    const WrittenResult again = Merge(merged.bytes, std::nullopt);
    EXPECT_EQ(expected, Summarize(again.bytes));
    const WrittenResult written = Capabilities(merged.bytes);
    EXPECT_EQ(S_OK, written.result);
    EXPECT_EQ(capabilities, Summarize(ReadFramework(written.bytes, Tag::PrintCapabilities).root));
}

INSTANTIATE_TEST_SUITE_P(Switches, WritingTest,
                         testing::Values("prefixes=std", "prefixes=mangled", "prefixes=default-ns",
                                         "prefixes=local", "prefixes=collide", "encoding=utf8-bom",
                                         "encoding=utf16le", "whitespace=pretty", "whitespace=comments"),
                         [](const auto& setting) {
                             std::string name = setting.param;
                             for (char& character : name) {
                                 if (std::isalnum(static_cast<unsigned char>(character)) == 0)
                                     character = '_';
                             }
                             return name;
                         });

}  // namespace
}  // namespace devkit::prntvpt
