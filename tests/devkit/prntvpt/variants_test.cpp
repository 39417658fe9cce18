#include "devkit/prntvpt/merge/variants.h"

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "devkit/prntvpt/device/base64.h"
#include "providertest.h"
#include "ticketsummary.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string Select(const std::string& feature, const std::string& option) {
    return "<psf:Feature name=\"" + feature + "\"><psf:Option name=\"" + option + "\"/></psf:Feature>";
}

class VariantTest : public ProviderTest {
  protected:
    [[nodiscard]] Element ReadCapabilities() {
        return ReadFramework(Capabilities().bytes, Tag::PrintCapabilities).root;
    }
    [[nodiscard]] std::string LineAfter(const std::string& delta, const char* local, HRESULT expected,
                                        EPrintTicketScope scope = kPTJobScope) {
        const WrittenResult merged = MergeWithDefault(Ticket(delta), scope);
        EXPECT_EQ(merged.result, expected) << delta;
        return Line(merged.bytes, local);
    }
};

TEST_F(VariantTest, BinsCanBelongToThePage) {
    Use({"bins=page"});
    EXPECT_EQ(LineAfter("", "PageInputBin", NoConflict, kPTPageScope), "psk:PageInputBin[psk:AutoSelect]");
    EXPECT_EQ(LineAfter("", "JobInputBin", NoConflict), "");
    EXPECT_EQ(LineAfter(Select("psk:JobInputBin", "psk:Manual"), "JobInputBin", ConflictResolved), "");
    // The constraints moved with it, and see it at page scope now.
    EXPECT_EQ(LineAfter(Select("psk:PageInputBin", "dev:Tray2") + Select("psk:PageMediaSize", "psk:ISOA5"),
                        "PageInputBin", ConflictResolved, kPTPageScope),
              "psk:PageInputBin[psk:AutoSelect]");
}

TEST_F(VariantTest, BothSidesOfAConstraintMoveWithTheBin) {
    Use({"bins=page"});
    EXPECT_EQ(
        LineAfter(Select("psk:PageInputBin", "dev:Tray1") + Select("psk:PageMediaSize", "psk:ISODLEnvelope"),
                  "PageInputBin", ConflictResolved, kPTPageScope)
            .substr(0, 28),
        "psk:PageInputBin[psk:Manual(");
}

TEST_F(VariantTest, BinsCanBelongToTheDocument) {
    Use({"bins=document"});
    EXPECT_EQ(LineAfter("", "DocumentInputBin", NoConflict, kPTDocumentScope),
              "psk:DocumentInputBin[psk:AutoSelect]");
    EXPECT_EQ(LineAfter("", "DocumentInputBin", NoConflict, kPTPageScope), "");
}

TEST_F(VariantTest, NoScalingLacksTheFeatureAndItsParameters) {
    Use({"no-scaling=1"});
    const Element capabilities = ReadCapabilities();
    for (const Element& entry : capabilities.children) {
        EXPECT_FALSE(entry.name->local.starts_with("PageScaling")) << entry.name->local;
    }
    EXPECT_NE(capabilities.Find(Tag::ParameterDef, Keyword("PageMediaSizeMediaSizeWidth")), nullptr);
    EXPECT_EQ(LineAfter(Select("psk:PageScaling", "psk:Custom"), "PageScaling", ConflictResolved), "");
    EXPECT_EQ(Summarize(DefaultTicket()).size(), 11U);
}

TEST_F(VariantTest, NoCopiesLacksTheParameter) {
    Use({"no-copies=1"});
    EXPECT_EQ(ReadCapabilities().Find(Tag::ParameterDef, Keyword("JobCopiesAllDocuments")), nullptr);
    EXPECT_EQ(LineAfter("", "JobCopiesAllDocuments", NoConflict), "");
}

TEST_F(VariantTest, FeedDirectionCanBeAPropertyWhichTicketsDoNotHave) {
    Use({"feed=property"}, "longedge");
    const Element capabilities = ReadCapabilities();
    for (const Element& option : capabilities.Find(Tag::Feature, Keyword("JobInputBin"))->children) {
        if (option.tag != Tag::Option) continue;
        EXPECT_EQ(option.Find(Tag::ScoredProperty, Keyword("FeedDirection")), nullptr);
        ASSERT_NE(option.FindProperty(Keyword("FeedDirection")), nullptr);
        EXPECT_EQ(*option.FindProperty(Keyword("FeedDirection")), NameValue(Keyword("LongEdgeFirst")));
    }
    EXPECT_EQ(Line(DefaultTicket(), "JobInputBin"),
              "psk:JobInputBin[psk:Cassette(psk:BinType=psk:SheetFeed)]");
}

TEST_F(VariantTest, FeedDirectionCanBeAbsent) {
    Use({"feed=absent"}, "longedge");
    EXPECT_EQ(Capabilities().bytes.find("FeedDirection"), std::string::npos);
    EXPECT_EQ(DefaultTicket().find("FeedDirection"), std::string::npos);
}

TEST_F(VariantTest, UsMakesLetterTheDefault) {
    Use({"us=1"});
    const std::string letter =
        "psk:PageMediaSize[psk:NorthAmericaLetter(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]";
    EXPECT_EQ(Line(DefaultTicket(), "PageMediaSize"), letter);
    EXPECT_EQ(LineAfter(Select("psk:PageMediaSize", "psk:ISOA3"), "PageMediaSize", ConflictResolved), letter);
}

TEST_F(VariantTest, SnapshotIsAPrivateParameterThatIsCarried) {
    constexpr unsigned Bytes = 131070;
    Use({"snapshot=131070"});
    std::string content(Bytes, '\0');
    for (unsigned index = 0; index < Bytes; ++index) content[index] = static_cast<char>(index % 251);
    const std::string expected = "dev:PageDevmodeSnapshot=" + ToBase64(content);
    ASSERT_EQ(expected.size(), 24U + 174760U);
    EXPECT_EQ(Summarize(DefaultTicket())[0], expected);
    EXPECT_EQ(LineAfter("", "PageDevmodeSnapshot", NoConflict, kPTPageScope), expected);
    // Nobody misses it.
    EXPECT_EQ(Line(Merge(Ticket(""), std::nullopt).bytes, "PageDevmodeSnapshot"), "");
}

TEST_F(VariantTest, PrivateSizeNamesHideWhatASheetIs) {
    Use({"private-size-names=1"});
    EXPECT_EQ(Line(DefaultTicket(), "PageMediaSize"),
              "psk:PageMediaSize[dev:User0000000256(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]");
    EXPECT_EQ(Capabilities().bytes.find("ISOA4"), std::string::npos);
    const std::string letter =
        Ticket(R"(<psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:NorthAmericaLetter">
<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">215900</psf:Value></psf:ScoredProperty>
<psf:ScoredProperty name="psk:MediaSizeHeight"><psf:Value xsi:type="xsd:integer">279400</psf:Value></psf:ScoredProperty>
</psf:Option></psf:Feature>)");
    EXPECT_EQ(Line(MergeWithDefault(letter).bytes, "PageMediaSize"),
              "psk:PageMediaSize[dev:User0000000259(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]");
    // Constraints and margins know the sheets by their new names: this one is the envelope.
    EXPECT_EQ(
        LineAfter(Select("psk:JobInputBin", "dev:Tray1") + Select("psk:PageMediaSize", "dev:User0000000262"),
                  "JobInputBin", ConflictResolved)
            .substr(0, 27),
        "psk:JobInputBin[psk:Manual(");
    EXPECT_NE(Capabilities(Ticket(Select("psk:PageMediaSize", "dev:User0000000262")))
                  .bytes.find("\"psk:OriginHeight\"><psf:Value xsi:type=\"xsd:integer\">12700<"),
              std::string::npos);
}

TEST_F(VariantTest, EveryVariantLeavesTheDefaultTicketAFixpoint) {
    for (const char* const variant :
         {"bins=document", "bins=page", "no-scaling=1", "no-copies=1", "feed=property", "feed=absent",
          "imageable=absent", "us=1", "snapshot=100", "private-size-names=1"}) {
        Use({variant});
        const WrittenResult merged = Merge(DefaultTicket(), std::nullopt);
        EXPECT_EQ(merged.result, NoConflict) << variant;
        EXPECT_EQ(merged.bytes, DefaultTicket()) << variant;
    }
}

TEST_F(VariantTest, VariantsGoTogether) {
    Use({"bins=page", "no-scaling=1", "no-copies=1", "us=1", "snapshot=10", "private-size-names=1"});
    EXPECT_EQ(Summarize(DefaultTicket()).size(), 11U);
    EXPECT_EQ(Line(DefaultTicket(), "PageMediaSize"),
              "psk:PageMediaSize[dev:User0000000259(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]");
}

}  // namespace
}  // namespace devkit::prntvpt
