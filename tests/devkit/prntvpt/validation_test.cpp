#include "devkit/prntvpt/merge/validation.h"

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "providertest.h"
#include "tickets.h"

// What the provider makes of a ticket, case by case, as documented for print ticket validation.

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

using Lines = std::vector<std::string>;

constexpr const char* kA4 =
    "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]";

// A feature with one option.
[[nodiscard]] std::string Select(const std::string& feature, const std::string& option,
                                 const std::string& content = {}) {
    return "<psf:Feature name=\"" + feature + "\"><psf:Option name=\"" + option + "\">" + content +
           "</psf:Option></psf:Feature>";
}

class ValidationTest : public ProviderTest {
  protected:
    void SetUp() override { Use({}); }

    // The lines of the default ticket with one of them replaced.
    [[nodiscard]] Lines DefaultWith(const std::string& line) {
        Lines lines = Summarize(DefaultTicket());
        const std::string name = line.substr(0, line.find_first_of("[=("));
        for (std::string& entry : lines) {
            if (entry.compare(0, name.size() + 1, name + line[name.size()]) == 0) entry = line;
        }
        return lines;
    }
};

TEST_F(ValidationTest, SupportedOptionOfTheDeltaIsTakenAndAllElseStays) {
    const WrittenResult merged = MergeWithDefault(Ticket(Select("psk:PageOrientation", "psk:Landscape")));
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(DefaultWith("psk:PageOrientation[psk:Landscape]"), Summarize(merged.bytes));
}

TEST_F(ValidationTest, EmptyBaseBecomesACompleteTicketWithoutConflict) {
    const WrittenResult merged = Merge(Ticket(""), std::nullopt);
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(Summarize(DefaultTicket()), Summarize(merged.bytes));
}

TEST_F(ValidationTest, NullDeltaValidatesTheBase) {
    const WrittenResult merged =
        Merge(Ticket(Sheet("psk:ISOA5", 148000, 210000)), std::nullopt, kPTPageScope);
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ("psk:PageMediaSize[psk:ISOA5(psk:MediaSizeWidth=148000,psk:MediaSizeHeight=210000)]",
              Line(merged.bytes, "PageMediaSize"));
}

TEST_F(ValidationTest, EntriesOfAWiderScopeAreIgnoredInTheDeltaAndLeftOutOfTheResult) {
    const std::string delta =
        Ticket(Select("psk:JobInputBin", "psk:Manual") + Select("psk:DocumentCollate", "psk:Uncollated") +
               Select("psk:PageOrientation", "psk:Landscape") + Parameter("psk:JobCopiesAllDocuments", "5") +
               TextProperty("psk:JobName", "x"));
    const Lines page = Summarize(MergeWithDefault(delta, kPTPageScope).bytes);
    ASSERT_EQ(6U, page.size());
    for (const std::string& line : page) EXPECT_EQ("psk:Page", line.substr(0, 8));
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]", page[2]);
    const Lines document = Summarize(MergeWithDefault(delta, kPTDocumentScope).bytes);
    ASSERT_EQ(7U, document.size());
    EXPECT_EQ("psk:DocumentCollate[psk:Uncollated]", document[0]);
    EXPECT_EQ("psk:JobCopiesAllDocuments=5",
              Line(MergeWithDefault(delta, kPTJobScope).bytes, "JobCopiesAllDocuments"));
}

TEST_F(ValidationTest, FeatureIsReplacedWholeWithItsSubFeatures) {
    const std::string base =
        Ticket(R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
               Scored("psk:PagesPerSheet", "integer", "4") + "</psf:Option>" +
               Select("psk:PresentationDirection", "psk:BottomRight") + "</psf:Feature>");
    const std::string delta =
        Ticket(R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
               Scored("psk:PagesPerSheet", "integer", "2") + "</psf:Option></psf:Feature>");
    EXPECT_EQ(
        "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=4)]"
        "{psk:PresentationDirection[psk:BottomRight]}",
        Line(Merge(base, std::nullopt).bytes, "JobNUpAllDocumentsContiguously"));
    EXPECT_EQ(
        "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=2)]"
        "{psk:PresentationDirection[psk:RightBottom]}",
        Line(Merge(base, delta).bytes, "JobNUpAllDocumentsContiguously"));
}

TEST_F(ValidationTest, ParametersAreMergedIndependentlyOfTheOptionsThatReferToThem) {
    const std::string square =
        Select("psk:PageScaling", "psk:CustomSquare", Reference("psk:Scale", "psk:PageScalingScale"));
    const std::string base = Ticket(square + Parameter("psk:PageScalingScale", "50"));
    EXPECT_EQ("psk:PageScalingScale=50", Line(Merge(base, Ticket(square)).bytes, "PageScalingScale"));
    EXPECT_EQ("psk:PageScalingScale=75",
              Line(Merge(base, Ticket(Parameter("psk:PageScalingScale", "75"))).bytes, "PageScalingScale"));
}

TEST_F(ValidationTest, NameWithoutScopeIsAJobNameAndNoted) {
    const WrittenResult merged = MergeWithDefault(Ticket(TextProperty("psk:Title", "x")), kPTPageScope);
    EXPECT_EQ("", Line(merged.bytes, "Title"));
    EXPECT_EQ((Lines{"the name Title begins with none of Job, Document and Page"}), Report().notes);
    EXPECT_EQ("#psk:Title=x", Line(MergeWithDefault(Ticket(TextProperty("psk:Title", "x"))).bytes, "Title"));
}

// Namespaces.

TEST_F(ValidationTest, ForeignNamespaceIsRemovedWithDescendantsAndWithoutConflict) {
    const std::string delta = Select("acme:PageStamp", "acme:Confidential", TextProperty("psk:X", "y")) +
                              Parameter("acme:PageStampAngle", "45") + TextProperty("acme:JobOwner", "me");
    const WrittenResult merged = MergeWithDefault(Ticket(delta));
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(Summarize(DefaultTicket()), Summarize(merged.bytes));
    EXPECT_EQ(std::string::npos, merged.bytes.find("acme"));
}

TEST_F(ValidationTest, ForeignNamespaceIsRemovedAtAnyLevel) {
    const std::string nested = R"(<psf:Feature name="psk:PageScaling"><psf:Option name="psk:None"/>)" +
                               Select("acme:Extra", "acme:On") + "</psf:Feature>";
    EXPECT_EQ("psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}",
              LineAfter(nested, "PageScaling", kNoConflict));
    // Without its only option the feature is one without an option.
    EXPECT_EQ("psk:PageOrientation[psk:Portrait]",
              LineAfter(Select("psk:PageOrientation", "acme:Upright"), "PageOrientation", kNoConflict));
}

TEST_F(ValidationTest, PrivateFeatureOfTheDeviceIsValidatedLikeAnyOther) {
    EXPECT_EQ("dev:JobTonerSave[dev:On]",
              LineAfter(Select("dev:JobTonerSave", "dev:On"), "JobTonerSave", kNoConflict));
    EXPECT_EQ("dev:JobTonerSave[dev:Off]",
              LineAfter(Select("dev:JobTonerSave", "dev:Maybe"), "JobTonerSave", kConflictResolved));
}

TEST_F(ValidationTest, PrivateOptionOfAPublicFeatureSurvives) {
    EXPECT_EQ(
        "psk:JobInputBin[dev:Tray1(psk:BinType=psk:SheetFeed,psk:FeedType=psk:Automatic,"
        "psk:MediaCapacity=psk:Standard,psk:MediaSheetCapacity=250,"
        "psk:FeedDirection=psk:ShortEdgeFirst)]",
        LineAfter(Select("psk:JobInputBin", "dev:Tray1"), "JobInputBin", kNoConflict));
}

TEST_F(ValidationTest, PublicFeatureThatTheDeviceLacksIsRemovedWithConflict) {
    EXPECT_EQ("", LineAfter(Select("psk:PageBorderless", "psk:None"), "PageBorderless", kConflictResolved));
    EXPECT_EQ("",
              LineAfter(Select("psk:DocumentDuplex", "psk:OneSided"), "DocumentDuplex", kConflictResolved));
}

TEST_F(ValidationTest, UnknownNameInAKnownNamespaceIsNoFormatError) {
    EXPECT_EQ("",
              LineAfter(Select("psk:PageNoSuchFeature", "psk:X"), "PageNoSuchFeature", kConflictResolved));
    EXPECT_EQ("#psk:JobNoSuchProperty=x",
              LineAfter(TextProperty("psk:JobNoSuchProperty", "x"), "JobNoSuchProperty", kNoConflict));
    EXPECT_EQ("psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}",
              LineAfter(R"(<psf:Feature name="psk:PageScaling"><psf:Option name="psk:None"/>)" +
                            Select("psk:NoSuchPart", "psk:X") + "</psf:Feature>",
                        "PageScaling", kConflictResolved));
}

// Options.

TEST_F(ValidationTest, UnsupportedOptionBecomesTheDefaultWithConflict) {
    EXPECT_EQ(kA4, LineAfter(Sheet("psk:ISOA3", 297000, 420000), "PageMediaSize", kConflictResolved));
    EXPECT_EQ("psk:PageOrientation[psk:Portrait]",
              LineAfter(Select("psk:PageOrientation", "psk:Sideways"), "PageOrientation", kConflictResolved));
}

TEST_F(ValidationTest, DefaultIsTheDevicesAndNotTheBases) {
    const std::string base = Ticket(Select("psk:PageOrientation", "psk:Landscape"));
    const WrittenResult merged = Merge(base, Ticket(Select("psk:PageOrientation", "psk:Sideways")));
    EXPECT_EQ("psk:PageOrientation[psk:Portrait]", Line(merged.bytes, "PageOrientation"));
}

TEST_F(ValidationTest, OptionOfAnotherNameAndTheSameSizeIsTheDevicesWithConflict) {
    EXPECT_EQ(
        "psk:PageMediaSize[psk:NorthAmericaLetter(psk:MediaSizeWidth=215900,"
        "psk:MediaSizeHeight=279400)]",
        LineAfter(Sheet("psk:NorthAmericaNote", 215900, 279400), "PageMediaSize", kConflictResolved));
}

TEST_F(ValidationTest, NameCountsMoreThanNumbers) {
    EXPECT_EQ(kA4, LineAfter(Sheet("psk:ISOA4", 215900, 279400), "PageMediaSize", kNoConflict));
}

TEST_F(ValidationTest, UnknownSizeWithinTheCustomRangeBecomesACustomSheetOfThatSize) {
    const WrittenResult merged = MergeWithDefault(Ticket(Sheet("psk:ISOB5Envelope", 176000, 250000)));
    EXPECT_EQ(kConflictResolved, merged.result);
    EXPECT_EQ(
        "psk:PageMediaSize[psk:CustomMediaSize(psk:MediaSizeWidth=@psk:PageMediaSizeMediaSizeWidth,"
        "psk:MediaSizeHeight=@psk:PageMediaSizeMediaSizeHeight)]",
        Line(merged.bytes, "PageMediaSize"));
    EXPECT_EQ("psk:PageMediaSizeMediaSizeWidth=176000", Line(merged.bytes, "PageMediaSizeMediaSizeWidth"));
    EXPECT_EQ("psk:PageMediaSizeMediaSizeHeight=250000", Line(merged.bytes, "PageMediaSizeMediaSizeHeight"));
}

TEST_F(ValidationTest, CustomSheetKeepsItsReferencesAndParameters) {
    const std::string custom =
        Select("psk:PageMediaSize", "psk:CustomMediaSize",
               Reference("psk:MediaSizeWidth", "psk:PageMediaSizeMediaSizeWidth") +
                   Reference("psk:MediaSizeHeight", "psk:PageMediaSizeMediaSizeHeight"));
    const WrittenResult merged =
        MergeWithDefault(Ticket(custom + Parameter("psk:PageMediaSizeMediaSizeWidth", "150000") +
                                Parameter("psk:PageMediaSizeMediaSizeHeight", "200000")));
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ("psk:PageMediaSizeMediaSizeWidth=150000", Summarize(merged.bytes)[1]);
    EXPECT_EQ("psk:PageMediaSizeMediaSizeHeight=200000", Summarize(merged.bytes)[2]);
    EXPECT_EQ(
        "psk:PageMediaSize[psk:CustomMediaSize(psk:MediaSizeWidth=@psk:PageMediaSizeMediaSizeWidth,"
        "psk:MediaSizeHeight=@psk:PageMediaSizeMediaSizeHeight)]",
        Line(merged.bytes, "PageMediaSize"));
}

TEST_F(ValidationTest, CustomSheetWithLiteralNumbersGetsThemAsParameters) {
    const WrittenResult merged = MergeWithDefault(Ticket(Sheet("psk:CustomMediaSize", 150000, 200000)));
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ("psk:PageMediaSizeMediaSizeWidth=150000", Line(merged.bytes, "PageMediaSizeMediaSizeWidth"));
}

TEST_F(ValidationTest, CustomSheetWithoutParametersGetsTheDefaults) {
    const WrittenResult merged = MergeWithDefault(Ticket(Select("psk:PageMediaSize", "psk:CustomMediaSize")));
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ("psk:PageMediaSizeMediaSizeWidth=210000", Line(merged.bytes, "PageMediaSizeMediaSizeWidth"));
    EXPECT_EQ("psk:PageMediaSizeMediaSizeHeight=297000", Line(merged.bytes, "PageMediaSizeMediaSizeHeight"));
}

TEST_F(ValidationTest, UnnamedOptionIsFoundByItsScoredProperties) {
    const auto perSheet = [&](const char* pages) {
        return R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
               Scored("psk:PagesPerSheet", "integer", pages) + "</psf:Option></psf:Feature>";
    };
    const char* const name = "JobNUpAllDocumentsContiguously";
    EXPECT_EQ(
        "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=4)]"
        "{psk:PresentationDirection[psk:RightBottom]}",
        LineAfter(perSheet("4"), name, kNoConflict));
    EXPECT_EQ(
        "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=1)]"
        "{psk:PresentationDirection[psk:RightBottom]}",
        LineAfter(perSheet("3"), name, kConflictResolved));
    const std::string resolution = R"(<psf:Feature name="psk:PageResolution"><psf:Option>)" +
                                   Scored("psk:ResolutionX", "integer", "1200") +
                                   Scored("psk:ResolutionY", "integer", "1200") +
                                   "</psf:Option></psf:Feature>";
    EXPECT_EQ("psk:PageResolution[dev:R1200(psk:ResolutionX=1200,psk:ResolutionY=1200)]",
              LineAfter(resolution + Select("psk:PageOutputColor", "psk:Monochrome"), "PageResolution",
                        kNoConflict));
}

TEST_F(ValidationTest, ScoredPropertiesMatchAsNameStringOrBareWord) {
    for (const auto& [type, value] : std::vector<std::pair<std::string, std::string>>{
             {"QName", "psk:LongEdgeFirst"}, {"string", "psk:LongEdgeFirst"}, {"string", "LongEdgeFirst"}}) {
        const std::string tray =
            Select("psk:JobInputBin", "dev:Unknown", Scored("psk:FeedDirection", type, value));
        EXPECT_EQ("psk:JobInputBin[dev:Tray2(",
                  LineAfter(tray, "JobInputBin", kConflictResolved).substr(0, 26))
            << type << value;
    }
}

TEST_F(ValidationTest, FirstOfEquallyGoodOptionsIsTaken) {
    // Manual, Tray1 and Tray2 all feed sheets.
    const std::string tray =
        Select("psk:JobInputBin", "dev:Unknown", Scored("psk:BinType", "QName", "psk:SheetFeed"));
    EXPECT_EQ("psk:JobInputBin[psk:Manual(", LineAfter(tray, "JobInputBin", kConflictResolved).substr(0, 27));
}

TEST_F(ValidationTest, OptionThatIsNotFittedBecomesTheDefaultWithConflict) {
    EXPECT_EQ("psk:JobInputBin[psk:AutoSelect]",
              LineAfter(Select("psk:JobInputBin", "dev:Tray3"), "JobInputBin", kConflictResolved));
    // Also when others have more in common with it.
    EXPECT_EQ("psk:JobInputBin[psk:AutoSelect]",
              LineAfter(Select("psk:JobInputBin", "dev:Tray3",
                               Scored("psk:BinType", "QName", "psk:SheetFeed") +
                                   Scored("psk:MediaSheetCapacity", "integer", "500")),
                        "JobInputBin", kConflictResolved));
}

TEST(Validation, OptionThatTheAdministratorBarsBecomesTheDefaultWithConflict) {
    Device device = LoadDevice(DeviceFolder("simprinter"));
    for (Element& option : device.capabilities.Find(Tag::Feature, Keyword("PageOutputColor"))->children) {
        if (option.name == Keyword("Grayscale")) option.constrained = Keyword("AdminSettings");
    }
    const Element ticket =
        ReadFramework(Ticket(Select("psk:PageOutputColor", "psk:Grayscale")), Tag::PrintTicket).root;
    const ValidatedTicket validated = MergeAndValidate(device, Switches(), ticket, nullptr, kPTJobScope);
    EXPECT_TRUE(validated.conflict);
    EXPECT_EQ(*device.defaultTicket.Find(Tag::Feature, Keyword("PageOutputColor")),
              *validated.ticket.Find(Tag::Feature, Keyword("PageOutputColor")));
}

// A device that takes several options of one feature, one of which is the identity.
class PickManyTest : public testing::Test {
  protected:
    void SetUp() override {
        m_device = LoadDevice(DeviceFolder("simprinter"));
        Element& feature = *m_device.capabilities.Find(Tag::Feature, Keyword("PageOutputColor"));
        feature.Find(Tag::Property, FrameworkName("SelectionType"))->children[0].value =
            NameValue(Keyword("PickMany"));
        for (Element& option : feature.children) {
            if (option.name != Keyword("Monochrome")) continue;
            option.children.push_back(
                ValueElement(Tag::Property, FrameworkName("IdentityOption"), StringValue("True")));
        }
    }
    // The names of the options that come out, with "!" behind when there is a conflict.
    [[nodiscard]] std::string Chosen(const std::vector<std::string>& options) {
        std::string feature = R"(<psf:Feature name="psk:PageOutputColor">)";
        for (const std::string& option : options) feature += "<psf:Option name=\"psk:" + option + "\"/>";
        const Element ticket = ReadFramework(Ticket(feature + "</psf:Feature>"), Tag::PrintTicket).root;
        const ValidatedTicket validated =
            MergeAndValidate(m_device, Switches(), ticket, nullptr, kPTJobScope);
        std::string names;
        for (const Element& child :
             validated.ticket.Find(Tag::Feature, Keyword("PageOutputColor"))->children) {
            names += child.name->local + " ";
        }
        return names + (validated.conflict ? "!" : "");
    }

    Device m_device;
};

TEST_F(PickManyTest, KeepsSeveralOptions) { EXPECT_EQ("Grayscale Color ", Chosen({"Grayscale", "Color"})); }

TEST_F(PickManyTest, KeepsTheIdentityOptionAlone) {
    EXPECT_EQ("Monochrome ", Chosen({"Monochrome"}));
    EXPECT_EQ("Monochrome !", Chosen({"Color", "Monochrome"}));
}

TEST_F(PickManyTest, DropsRepetitions) {
    EXPECT_EQ("Color Grayscale ", Chosen({"Color", "Color", "Grayscale", "Color"}));
}

TEST_F(PickManyTest, DropsUnknownOptionsWithConflict) {
    EXPECT_EQ("Grayscale !", Chosen({"Sepia", "Grayscale"}));
    EXPECT_EQ("Color !", Chosen({"Sepia"}));
    EXPECT_EQ("Color ", Chosen({}));
}

TEST_F(ValidationTest, FeatureWithoutOptionGetsTheDefaultWithoutConflict) {
    EXPECT_EQ(kA4, LineAfter(R"(<psf:Feature name="psk:PageMediaSize"/>)", "PageMediaSize", kNoConflict));
}

TEST_F(ValidationTest, OfSeveralOptionsTheFirstIsKeptWithConflict) {
    const std::string two =
        R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Landscape"/>
<psf:Option name="psk:ReversePortrait"/></psf:Feature>)";
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]", LineAfter(two, "PageOrientation", kConflictResolved));
}

TEST_F(ValidationTest, ScoredPropertiesOfTheResultAreTheDevices) {
    EXPECT_EQ("psk:PageOutputColor[psk:Grayscale(psk:DeviceBitsPerPixel=8,psk:DriverBitsPerPixel=8)]",
              LineAfter(Select("psk:PageOutputColor", "psk:Grayscale", Scored("psk:Extra", "integer", "1")),
                        "PageOutputColor", kNoConflict));
}

// Parameters.

TEST_F(ValidationTest, ParameterThatTheDeviceLacksIsRemovedWithConflict) {
    EXPECT_EQ("", LineAfter(Parameter("psk:DocumentCopiesAllPages", "2"), "DocumentCopiesAllPages",
                            kConflictResolved));
}

TEST_F(ValidationTest, BadParameterValuesBecomeTheDefaultWithConflict) {
    const char* const copies = "psk:JobCopiesAllDocuments=1";
    EXPECT_EQ(copies, LineAfter(Parameter("psk:JobCopiesAllDocuments", "many"), "JobCopiesAllDocuments",
                                kConflictResolved));
    EXPECT_EQ(copies, LineAfter(Parameter("psk:JobCopiesAllDocuments", ""), "JobCopiesAllDocuments",
                                kConflictResolved));
    EXPECT_EQ(copies, LineAfter(R"(<psf:ParameterInit name="psk:JobCopiesAllDocuments"/>)",
                                "JobCopiesAllDocuments", kConflictResolved));
}

TEST_F(ValidationTest, ParametersOutOfRangeAreBroughtIntoItWithConflict) {
    EXPECT_EQ("psk:JobCopiesAllDocuments=999", LineAfter(Parameter("psk:JobCopiesAllDocuments", "1000"),
                                                         "JobCopiesAllDocuments", kConflictResolved));
    EXPECT_EQ("psk:JobCopiesAllDocuments=1", LineAfter(Parameter("psk:JobCopiesAllDocuments", "0"),
                                                       "JobCopiesAllDocuments", kConflictResolved));
}

TEST_F(ValidationTest, MissingParametersThatAreReferredToGetTheirDefaults) {
    const WrittenResult merged = MergeWithDefault(Ticket(
        Select("psk:PageScaling", "psk:Custom", Reference("psk:ScaleWidth", "psk:PageScalingScaleWidth")) +
        Parameter("psk:PageScalingScaleWidth", "5000")));
    EXPECT_EQ(kConflictResolved, merged.result);
    EXPECT_EQ("psk:PageScalingScaleWidth=1000", Line(merged.bytes, "PageScalingScaleWidth"));
    EXPECT_EQ("psk:PageScalingScaleHeight=100", Line(merged.bytes, "PageScalingScaleHeight"));
    EXPECT_EQ("psk:PageScalingOffsetWidth=0", Line(merged.bytes, "PageScalingOffsetWidth"));
    EXPECT_EQ("psk:PageScalingOffsetHeight=0", Line(merged.bytes, "PageScalingOffsetHeight"));
    EXPECT_EQ("", Line(merged.bytes, "PageScalingScale"));
}

TEST_F(ValidationTest, MissingUnconditionalParameterGetsItsDefaultWithoutConflict) {
    const WrittenResult merged = Merge(Ticket(""), std::nullopt);
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ("psk:JobCopiesAllDocuments=1", Summarize(merged.bytes)[0]);
}

TEST_F(ValidationTest, ConditionalParameterWithoutReferenceStays) {
    EXPECT_EQ("psk:PageScalingScale=50",
              LineAfter(Parameter("psk:PageScalingScale", "50"), "PageScalingScale", kNoConflict));
}

// Properties.

TEST_F(ValidationTest, PropertiesOfOptionsAreStripped) {
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]",
              LineAfter(Select("psk:PageOrientation", "psk:Landscape", TextProperty("psk:DisplayName", "x")),
                        "PageOrientation", kNoConflict));
}

TEST_F(ValidationTest, PropertiesOfFeaturesAndOfTheRootAreKept) {
    const std::string feature = R"(<psf:Feature name="psk:PageOrientation">)" +
                                TextProperty("psk:DisplayName", "x") +
                                R"(<psf:Option name="psk:Landscape"/></psf:Feature>)";
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]#psk:DisplayName=x",
              LineAfter(feature, "PageOrientation", kNoConflict));
    EXPECT_EQ("#psk:JobName=report",
              LineAfter(TextProperty("psk:JobName", "report"), "JobName", kNoConflict));
    EXPECT_EQ("#dev:JobOwner=me", LineAfter(TextProperty("dev:JobOwner", "me"), "JobOwner", kNoConflict));
}

TEST_F(ValidationTest, RootPropertyOfTheDeltaReplacesTheBases) {
    const WrittenResult merged =
        Merge(Ticket(TextProperty("psk:JobName", "old")), Ticket(TextProperty("psk:JobName", "new")));
    EXPECT_EQ("#psk:JobName=new", Line(merged.bytes, "JobName"));
}

// Constraints.

TEST_F(ValidationTest, TransparenciesAreNotPrintedOnBothSides) {
    const std::string duplex = Select("psk:JobDuplexAllDocumentsContiguously", "psk:TwoSidedLongEdge");
    for (const char* const media : {"psk:Transparency", "psk:EnvelopePlain"}) {
        EXPECT_EQ("psk:JobDuplexAllDocumentsContiguously[psk:OneSided]",
                  LineAfter(duplex + Select("psk:PageMediaType", media), "JobDuplexAllDocumentsContiguously",
                            kConflictResolved));
    }
    EXPECT_EQ("psk:JobDuplexAllDocumentsContiguously[psk:TwoSidedLongEdge(psk:DuplexMode=psk:Automatic)]",
              LineAfter(duplex + Select("psk:PageMediaType", "psk:CardStock"),
                        "JobDuplexAllDocumentsContiguously", kNoConflict));
}

TEST_F(ValidationTest, TrayTwoTakesLargeSheetsOnly) {
    const std::string tray = Select("psk:JobInputBin", "dev:Tray2");
    EXPECT_EQ("psk:JobInputBin[psk:AutoSelect]",
              LineAfter(tray + Select("psk:PageMediaSize", "psk:ISOA5"), "JobInputBin", kConflictResolved));
    EXPECT_EQ(
        "psk:JobInputBin[dev:Tray2(",
        LineAfter(tray + Select("psk:PageMediaSize", "psk:NorthAmericaLegal"), "JobInputBin", kNoConflict)
            .substr(0, 26));
}

TEST_F(ValidationTest, TrayOneTakesNoEnvelopesAndNoCustomSheets) {
    for (const char* const size :
         {"psk:CustomMediaSize", "psk:ISODLEnvelope", "psk:NorthAmericaNumber10Envelope"}) {
        EXPECT_EQ("psk:JobInputBin[psk:Manual(",
                  LineAfter(Select("psk:JobInputBin", "dev:Tray1") + Select("psk:PageMediaSize", size),
                            "JobInputBin", kConflictResolved)
                      .substr(0, 27));
    }
}

TEST_F(ValidationTest, HighResolutionIsNotForColourAlsoAtPageScope) {
    const std::string delta = Ticket(Select("psk:PageResolution", "dev:R1200"));
    const WrittenResult merged = MergeWithDefault(delta, kPTPageScope);
    EXPECT_EQ(kConflictResolved, merged.result);
    EXPECT_EQ("psk:PageResolution[dev:R600(psk:ResolutionX=600,psk:ResolutionY=600)]",
              Line(merged.bytes, "PageResolution"));
}

TEST_F(ValidationTest, ParametersThatAConstraintMadeUselessGo) {
    const WrittenResult merged = MergeWithDefault(Ticket(
        R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
        Scored("psk:PagesPerSheet", "integer", "2") + "</psf:Option></psf:Feature>" +
        Select("psk:PageScaling", "psk:Custom", Reference("psk:ScaleWidth", "psk:PageScalingScaleWidth")) +
        Parameter("psk:PageScalingScaleWidth", "50") + Parameter("psk:PageScalingScale", "60")));
    EXPECT_EQ(kConflictResolved, merged.result);
    EXPECT_EQ("psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}",
              Line(merged.bytes, "PageScaling"));
    EXPECT_EQ("", Line(merged.bytes, "PageScalingScaleWidth"));
    // No constraint ended this one's reference.
    EXPECT_EQ("psk:PageScalingScale=60", Line(merged.bytes, "PageScalingScale"));
}

TEST_F(ValidationTest, ConstraintBetweenJobAndPageIsNotSeenAtPageScope) {
    const std::string job = Ticket(Select("psk:JobInputBin", "dev:Tray2"));
    EXPECT_EQ(kNoConflict, Merge(job, Ticket(Select("psk:PageMediaSize", "psk:ISOA5")), kPTPageScope).result);
}

// Whatever is asked for, what comes out is valid and complete.

TEST_F(ValidationTest, EveryResultIsAFixpointOfItsScope) {
    const std::vector<std::string> deltas{
        Sheet("psk:ISOA3", 297000, 420000),
        Sheet("psk:ISOB5Envelope", 176000, 250000),
        Select("psk:JobInputBin", "dev:Tray3"),
        Select("psk:PageScaling", "psk:Custom"),
        Select("psk:JobInputBin", "dev:Tray1") + Select("psk:PageMediaSize", "psk:CustomMediaSize"),
        TextProperty("psk:JobName", "x") + Select("acme:PageStamp", "acme:On"),
        Parameter("psk:PageScalingScale", "0") + Select("psk:PageResolution", "dev:R1200")};
    const std::vector<std::string> switches{
        "private=known", "private=strict",   "private=all",         "order=input",      "order=reversed",
        "orphans=prune", "fallback=nearest", "whitespace=comments", "prefixes=mangled", "prefixes=collide"};
    for (const std::string& setting : switches) {
        Use({setting});
        for (const std::string& delta : deltas) {
            for (const EPrintTicketScope scope : {kPTPageScope, kPTDocumentScope, kPTJobScope}) {
                const WrittenResult merged = MergeWithDefault(Ticket(delta), scope);
                const WrittenResult again = Merge(merged.bytes, std::nullopt, scope);
                EXPECT_EQ(kNoConflict, again.result) << setting << delta;
                EXPECT_EQ(Summarize(merged.bytes), Summarize(again.bytes)) << setting << delta;
            }
        }
    }
}

}  // namespace
}  // namespace devkit::prntvpt
