#include <cctype>

#include "devkit/printschema/reader.h"
#include "providertest.h"
#include "ticketsummary.h"

// The switches for what the documentation of print ticket validation leaves open.

namespace devkit::prntvpt {
namespace {

using Lines = std::vector<std::string>;

[[nodiscard]] std::string Select(const std::string& feature, const std::string& option,
                                 const std::string& content = {}) {
    return "<psf:Feature name=\"" + feature + "\"><psf:Option name=\"" + option + "\">" + content +
           "</psf:Option></psf:Feature>";
}

[[nodiscard]] std::string Sheet(const std::string& option, const std::string& width,
                                const std::string& height) {
    return Select("psk:PageMediaSize", option,
                  R"(<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">)" +
                      width +
                      R"(</psf:Value></psf:ScoredProperty><psf:ScoredProperty name="psk:MediaSizeHeight">)" +
                      R"(<psf:Value xsi:type="xsd:integer">)" + height + "</psf:Value></psf:ScoredProperty>");
}

class BehaviourTest : public ProviderTest {
  protected:
    [[nodiscard]] std::string LineAfter(const std::string& delta, const char* local, HRESULT expected,
                                        EPrintTicketScope scope = kPTJobScope) {
        const WrittenResult merged = MergeWithDefault(Ticket(delta), scope);
        EXPECT_EQ(merged.result, expected) << delta;
        return Line(merged.bytes, local);
    }
};

TEST_F(BehaviourTest, StrictRemovesTheDevicesOwnFeaturesToo) {
    Use({"private=strict"});
    const WrittenResult merged =
        MergeWithDefault(Ticket(Select("dev:JobTonerSave", "dev:On") + Select("acme:PageStamp", "acme:On") +
                                Select("psk:JobInputBin", "dev:Tray1")));
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Line(merged.bytes, "JobTonerSave"), "");
    EXPECT_EQ(Line(merged.bytes, "PageStamp"), "");
    EXPECT_EQ(Line(merged.bytes, "JobInputBin").substr(0, 26), "psk:JobInputBin[dev:Tray1(");
    EXPECT_EQ(Summarize(merged.bytes).size(), 11U);
}

TEST_F(BehaviourTest, StrictOptionsRemovesPrivateOptionsOfPublicFeatures) {
    Use({"private=strict", "strict=options"});
    EXPECT_EQ(LineAfter(Select("psk:JobInputBin", "dev:Tray1"), "JobInputBin", NoConflict),
              "psk:JobInputBin[psk:AutoSelect]");
    // The device has no public resolution.
    EXPECT_EQ(LineAfter("", "PageResolution", NoConflict), "");
}

TEST_F(BehaviourTest, StrictOptionsWithoutStrictDoesNothing) {
    Use({"strict=options"});
    EXPECT_EQ(LineAfter(Select("psk:JobInputBin", "dev:Tray1"), "JobInputBin", NoConflict).substr(0, 26),
              "psk:JobInputBin[dev:Tray1(");
}

TEST_F(BehaviourTest, AllKeepsForeignEntriesUntouchedAtTheEnd) {
    Use({"private=all"});
    const std::string foreign =
        Select("acme:PageStamp", "acme:Secret", R"(<psf:Property name="psk:DisplayName"><psf:Value
 xsi:type="xsd:string">Secret</psf:Value></psf:Property>)") +
        R"(<psf:ParameterInit name="acme:PageStampAngle"><psf:Value xsi:type="xsd:integer">45</psf:Value>
</psf:ParameterInit><psf:Property name="acme:JobOwner"><psf:Value>me</psf:Value></psf:Property>)";
    const WrittenResult merged = MergeWithDefault(Ticket(foreign));
    EXPECT_EQ(merged.result, NoConflict);
    Lines expected = Summarize(DefaultTicket());
    expected.insert(expected.end(), {"acme:PageStamp[acme:Secret(#psk:DisplayName=Secret)]",
                                     "acme:PageStampAngle=45", "#acme:JobOwner=me"});
    EXPECT_EQ(Summarize(merged.bytes), expected);
}

TEST_F(BehaviourTest, AllStillKeepsToTheScope) {
    Use({"private=all"});
    EXPECT_EQ(LineAfter(Select("acme:JobStamp", "acme:On"), "JobStamp", NoConflict, kPTPageScope), "");
}

TEST_F(BehaviourTest, DropIsConflictCountsForeignEntries) {
    Use({"drop-is-conflict=1"});
    EXPECT_EQ(LineAfter(Select("acme:PageStamp", "acme:On"), "PageStamp", ConflictResolved), "");
    EXPECT_EQ(LineAfter(Select("psk:PageOrientation", "psk:Landscape"), "PageStamp", NoConflict), "");
}

TEST_F(BehaviourTest, DuplicatesFirstKeepsTheFirst) {
    const std::string two =
        Select("psk:PageOrientation", "psk:Landscape") + Select("psk:PageOrientation", "psk:Portrait");
    Use({"duplicates=first"});
    EXPECT_EQ(LineAfter(two, "PageOrientation", NoConflict), "psk:PageOrientation[psk:Landscape]");
    Use({"duplicates=refuse"});
    const WrittenResult refused = MergeWithDefault(Ticket(two));
    EXPECT_EQ(refused.result, BadDelta);
    EXPECT_EQ(refused.error,
              L"Delta ticket: Duplicate definitions exist for feature or parameter PageOrientation");
}

TEST_F(BehaviourTest, OrphansPruneRemovesParametersWithoutReference) {
    const std::string scale =
        R"(<psf:ParameterInit name="psk:PageScalingScale"><psf:Value xsi:type="xsd:integer">50</psf:Value>
</psf:ParameterInit>)";
    Use({"orphans=prune"});
    EXPECT_EQ(LineAfter(scale, "PageScalingScale", NoConflict), "");
    EXPECT_EQ(
        LineAfter(scale + Select("psk:PageScaling", "psk:CustomSquare"), "PageScalingScale", NoConflict),
        "psk:PageScalingScale=50");
    EXPECT_EQ(LineAfter(scale, "JobCopiesAllDocuments", NoConflict), "psk:JobCopiesAllDocuments=1");
}

TEST_F(BehaviourTest, FallbackNearestTakesTheSheetOfTheNearestSize) {
    Use({"fallback=nearest"});
    EXPECT_EQ(
        LineAfter(Sheet("psk:ISOA3", "297000", "420000"), "PageMediaSize", ConflictResolved),
        "psk:PageMediaSize[psk:NorthAmericaLegal(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=355600)]");
    EXPECT_EQ(LineAfter(Sheet("dev:Stamp", "20000", "30000"), "PageMediaSize", ConflictResolved),
              "psk:PageMediaSize[psk:ISODLEnvelope(psk:MediaSizeWidth=110000,psk:MediaSizeHeight=220000)]");
    // Without numbers there is no nearest.
    EXPECT_EQ(LineAfter(Select("psk:PageMediaSize", "psk:ISOA3"), "PageMediaSize", ConflictResolved),
              "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]");
    // Other features have none either.
    EXPECT_EQ(LineAfter(Select("psk:PageOrientation", "psk:Sideways"), "PageOrientation", ConflictResolved),
              "psk:PageOrientation[psk:Portrait]");
}

TEST_F(BehaviourTest, OptionPropertiesOfAPerfectMatchCanBeKept) {
    const std::string property =
        R"(<psf:Property name="psk:DisplayName"><psf:Value xsi:type="xsd:string">x</psf:Value></psf:Property>)";
    const std::string foreign =
        R"(<psf:Property name="acme:DisplayName"><psf:Value xsi:type="xsd:string">x</psf:Value></psf:Property>)";
    Use({"option-props=keep-perfect"});
    EXPECT_EQ(LineAfter(Select("psk:PageOrientation", "psk:Landscape", property + foreign), "PageOrientation",
                        NoConflict),
              "psk:PageOrientation[psk:Landscape(#psk:DisplayName=x)]");
    // The name alone is no perfect match.
    const std::string wrongSize =
        R"(<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">1</psf:Value>
</psf:ScoredProperty>)";
    EXPECT_EQ(LineAfter(Select("psk:PageMediaSize", "psk:ISOA4", wrongSize + property), "PageMediaSize",
                        NoConflict),
              "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]");
    EXPECT_EQ(LineAfter(Select("psk:PageOrientation", "psk:Sideways", property), "PageOrientation",
                        ConflictResolved),
              "psk:PageOrientation[psk:Portrait]");
}

TEST_F(BehaviourTest, OrderInputKeepsTheOrderOfTheTicket) {
    Use({"order=input"});
    const std::string base =
        Ticket(R"(<psf:Property name="psk:JobName"><psf:Value>x</psf:Value></psf:Property>)" +
               Select("psk:PageOrientation", "psk:Landscape") + Select("psk:JobInputBin", "psk:AutoSelect"));
    const Lines lines = Summarize(Merge(base, Ticket(Select("psk:PageMediaType", "psk:Plain"))).bytes);
    ASSERT_EQ(lines.size(), 13U);
    EXPECT_EQ(lines[0], "#psk:JobName=x");
    EXPECT_EQ(lines[1], "psk:PageOrientation[psk:Landscape]");
    EXPECT_EQ(lines[2], "psk:JobInputBin[psk:AutoSelect]");
    EXPECT_EQ(lines[3], "psk:PageMediaType[psk:Plain]");
    EXPECT_EQ(lines[4], "psk:JobCopiesAllDocuments=1");
    EXPECT_EQ(lines[5], "psk:JobDuplexAllDocumentsContiguously[psk:OneSided]");
}

TEST_F(BehaviourTest, OrderReversedTurnsEveryLevel) {
    Use({"order=reversed"});
    const Lines lines = Summarize(MergeWithDefault(Ticket("")).bytes);
    ASSERT_EQ(lines.size(), 12U);
    EXPECT_EQ(lines[0], "dev:JobTonerSave[dev:Off]");
    EXPECT_EQ(lines[1], "psk:PageScaling{psk:ScaleOffsetAlignment[psk:Center]}[psk:None]");
    EXPECT_EQ(lines[6], "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeHeight=297000,psk:MediaSizeWidth=210000)]");
    EXPECT_EQ(lines[11], "psk:JobCopiesAllDocuments=1");
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
    ASSERT_EQ(expected.back(), "#psk:JobName=<&\"\xC3\xBC");

    Use({GetParam()});
    const WrittenResult merged = MergeWithDefault(delta);
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Summarize(merged.bytes), expected);
    const WrittenResult again = Merge(merged.bytes, std::nullopt);
    EXPECT_EQ(Summarize(again.bytes), expected);
    const WrittenResult written = Capabilities(merged.bytes);
    EXPECT_EQ(written.result, S_OK);
    EXPECT_EQ(Summarize(ReadFramework(written.bytes, Tag::PrintCapabilities).root), capabilities);
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
