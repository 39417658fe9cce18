#include "devkit/prntvpt/device/variants.h"

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "providertest.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

class VariantTest : public ProviderTest {
  protected:
    [[nodiscard]] Element ReadCapabilities() {
        return ReadFramework(Capabilities().bytes, Tag::PrintCapabilities).root;
    }
};

TEST_F(VariantTest, BinsCanBelongToThePage) {
    Use({"bins=page"});
    EXPECT_EQ("psk:PageInputBin[psk:AutoSelect]", LineAfter("", "PageInputBin", kNoConflict, kPTPageScope));
    EXPECT_EQ("", LineAfter("", "JobInputBin", kNoConflict));
    EXPECT_EQ("", LineAfter(Select("psk:JobInputBin", "psk:Manual"), "JobInputBin", kConflictResolved));
    // The constraints moved with it, and see it at page scope now.
    EXPECT_EQ("psk:PageInputBin[psk:AutoSelect]",
              LineAfter(Select("psk:PageInputBin", "dev:Tray2") + Select("psk:PageMediaSize", "psk:ISOA5"),
                        "PageInputBin", kConflictResolved, kPTPageScope));
}

TEST_F(VariantTest, BothSidesOfAConstraintMoveWithTheBin) {
    Use({"bins=page"});
    EXPECT_EQ("psk:PageInputBin[psk:Manual(", LineAfter(Select("psk:PageInputBin", "dev:Tray1") +
                                                            Select("psk:PageMediaSize", "psk:ISODLEnvelope"),
                                                        "PageInputBin", kConflictResolved, kPTPageScope)
                                                  .substr(0, 28));
}

TEST_F(VariantTest, BinsCanBelongToTheDocument) {
    Use({"bins=document"});
    EXPECT_EQ("psk:DocumentInputBin[psk:AutoSelect]",
              LineAfter("", "DocumentInputBin", kNoConflict, kPTDocumentScope));
    EXPECT_EQ("", LineAfter("", "DocumentInputBin", kNoConflict, kPTPageScope));
}

TEST_F(VariantTest, NoScalingLacksTheFeatureAndItsParameters) {
    Use({"no-scaling=1"});
    const Element capabilities = ReadCapabilities();
    for (const Element& entry : capabilities.children) {
        EXPECT_FALSE(entry.name->local.starts_with("PageScaling")) << entry.name->local;
    }
    EXPECT_NE(nullptr, capabilities.Find(Tag::ParameterDef, Keyword("PageMediaSizeMediaSizeWidth")));
    EXPECT_EQ("", LineAfter(Select("psk:PageScaling", "psk:Custom"), "PageScaling", kConflictResolved));
    EXPECT_EQ(11U, Summarize(DefaultTicket()).size());
}

TEST_F(VariantTest, NoCopiesLacksTheParameter) {
    Use({"no-copies=1"});
    EXPECT_EQ(nullptr, ReadCapabilities().Find(Tag::ParameterDef, Keyword("JobCopiesAllDocuments")));
    EXPECT_EQ("", LineAfter("", "JobCopiesAllDocuments", kNoConflict));
}

TEST_F(VariantTest, FeedDirectionCanBeAPropertyWhichTicketsDoNotHave) {
    Use({"feed=property"}, "longedge");
    const Element capabilities = ReadCapabilities();
    for (const Element& option : capabilities.Find(Tag::Feature, Keyword("JobInputBin"))->children) {
        if (option.tag != Tag::Option) continue;
        EXPECT_EQ(nullptr, option.Find(Tag::ScoredProperty, Keyword("FeedDirection")));
        ASSERT_NE(nullptr, option.FindProperty(Keyword("FeedDirection")));
        EXPECT_EQ(NameValue(Keyword("LongEdgeFirst")), *option.FindProperty(Keyword("FeedDirection")));
    }
    EXPECT_EQ("psk:JobInputBin[psk:Cassette(psk:BinType=psk:SheetFeed)]",
              Line(DefaultTicket(), "JobInputBin"));
}

TEST_F(VariantTest, FeedDirectionCanBeAbsent) {
    Use({"feed=absent"}, "longedge");
    EXPECT_EQ(std::string::npos, Capabilities().bytes.find("FeedDirection"));
    EXPECT_EQ(std::string::npos, DefaultTicket().find("FeedDirection"));
}

TEST_F(VariantTest, UsMakesLetterTheDefault) {
    Use({"us=1"});
    const std::string letter =
        "psk:PageMediaSize[psk:NorthAmericaLetter(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]";
    EXPECT_EQ(Line(DefaultTicket(), "PageMediaSize"), letter);
    EXPECT_EQ(letter,
              LineAfter(Select("psk:PageMediaSize", "psk:ISOA3"), "PageMediaSize", kConflictResolved));
}

TEST_F(VariantTest, SnapshotIsAPrivateParameterThatIsCarried) {
    Use({"snapshot=131070"});
    const std::string expected = Summarize(DefaultTicket())[0];
    EXPECT_EQ(24U + 174760U, expected.size());
    EXPECT_EQ("dev:PageDevmodeSnapshot=AAECAwQFBgcI", expected.substr(0, 36));
    EXPECT_EQ("LS4v", expected.substr(expected.size() - 4));
    EXPECT_EQ(expected, LineAfter("", "PageDevmodeSnapshot", kNoConflict, kPTPageScope));
    Use({"snapshot=1"});
    EXPECT_EQ("dev:PageDevmodeSnapshot=AA==", Summarize(DefaultTicket())[0]);
    // Nobody misses it.
    EXPECT_EQ("", Line(Merge(Ticket(""), std::nullopt).bytes, "PageDevmodeSnapshot"));
}

TEST_F(VariantTest, PrivateSizeNamesHideWhatASheetIs) {
    Use({"private-size-names=1"});
    EXPECT_EQ("psk:PageMediaSize[dev:User0000000256(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]",
              Line(DefaultTicket(), "PageMediaSize"));
    EXPECT_EQ(std::string::npos, Capabilities().bytes.find("ISOA4"));
    const std::string letter =
        Ticket(R"(<psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:NorthAmericaLetter">
<psf:ScoredProperty name="psk:MediaSizeWidth"><psf:Value xsi:type="xsd:integer">215900</psf:Value></psf:ScoredProperty>
<psf:ScoredProperty name="psk:MediaSizeHeight"><psf:Value xsi:type="xsd:integer">279400</psf:Value></psf:ScoredProperty>
</psf:Option></psf:Feature>)");
    EXPECT_EQ("psk:PageMediaSize[dev:User0000000259(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]",
              Line(MergeWithDefault(letter).bytes, "PageMediaSize"));
    // Constraints and margins know the sheets by their new names: this one is the envelope.
    EXPECT_EQ("psk:JobInputBin[psk:Manual(", LineAfter(Select("psk:JobInputBin", "dev:Tray1") +
                                                           Select("psk:PageMediaSize", "dev:User0000000262"),
                                                       "JobInputBin", kConflictResolved)
                                                 .substr(0, 27));
    EXPECT_NE(std::string::npos,
              Capabilities(Ticket(Select("psk:PageMediaSize", "dev:User0000000262")))
                  .bytes.find("\"psk:OriginHeight\"><psf:Value xsi:type=\"xsd:integer\">12700<"));
}

TEST_F(VariantTest, EveryVariantLeavesTheDefaultTicketAFixpoint) {
    for (const char* const variant :
         {"bins=document", "bins=page", "no-scaling=1", "no-copies=1", "feed=property", "feed=absent",
          "imageable=absent", "us=1", "snapshot=100", "private-size-names=1"}) {
        Use({variant});
        const WrittenResult merged = Merge(DefaultTicket(), std::nullopt);
        EXPECT_EQ(kNoConflict, merged.result) << variant;
        EXPECT_EQ(DefaultTicket(), merged.bytes) << variant;
    }
}

TEST_F(VariantTest, VariantsGoTogether) {
    Use({"bins=page", "no-scaling=1", "no-copies=1", "us=1", "snapshot=10", "private-size-names=1"});
    EXPECT_EQ(11U, Summarize(DefaultTicket()).size());
    EXPECT_EQ("psk:PageMediaSize[dev:User0000000259(psk:MediaSizeWidth=215900,psk:MediaSizeHeight=279400)]",
              Line(DefaultTicket(), "PageMediaSize"));
}

}  // namespace
}  // namespace devkit::prntvpt
