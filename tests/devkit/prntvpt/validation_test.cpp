#include "devkit/prntvpt/merge/validation.h"

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "providertest.h"
#include "ticketsummary.h"

// What the provider makes of a ticket, case by case, as documented for print ticket validation.

namespace devkit::prntvpt {
namespace {

using Lines = std::vector<std::string>;

constexpr const char* A4 =
    "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=210000,psk:MediaSizeHeight=297000)]";

// A feature with one option.
[[nodiscard]] std::string Select(const std::string& feature, const std::string& option,
                                 const std::string& content = {}) {
    return "<psf:Feature name=\"" + feature + "\"><psf:Option name=\"" + option + "\">" + content +
           "</psf:Option></psf:Feature>";
}

[[nodiscard]] std::string Scored(const std::string& name, const std::string& type, const std::string& value) {
    return "<psf:ScoredProperty name=\"" + name + "\"><psf:Value xsi:type=\"xsd:" + type + "\">" + value +
           "</psf:Value></psf:ScoredProperty>";
}

[[nodiscard]] std::string Reference(const std::string& name, const std::string& parameter) {
    return "<psf:ScoredProperty name=\"" + name + "\"><psf:ParameterRef name=\"" + parameter +
           "\"/></psf:ScoredProperty>";
}

[[nodiscard]] std::string Sheet(const std::string& option, int width, int height) {
    return Select("psk:PageMediaSize", option,
                  Scored("psk:MediaSizeWidth", "integer", std::to_string(width)) +
                      Scored("psk:MediaSizeHeight", "integer", std::to_string(height)));
}

[[nodiscard]] std::string Parameter(const std::string& name, const std::string& value) {
    return "<psf:ParameterInit name=\"" + name + "\"><psf:Value xsi:type=\"xsd:integer\">" + value +
           "</psf:Value></psf:ParameterInit>";
}

[[nodiscard]] std::string TextProperty(const std::string& name, const std::string& text) {
    return "<psf:Property name=\"" + name + "\"><psf:Value xsi:type=\"xsd:string\">" + text +
           "</psf:Value></psf:Property>";
}

class ValidationTest : public ProviderTest {
  protected:
    void SetUp() override { Use({}); }

    // Merges the delta into the default ticket at job scope; the line of `local` in the result.
    [[nodiscard]] std::string LineAfter(const std::string& delta, const char* local, HRESULT expected) {
        const WrittenResult merged = MergeWithDefault(Ticket(delta));
        EXPECT_EQ(merged.result, expected) << delta;
        EXPECT_EQ(merged.error, std::nullopt);
        return Line(merged.bytes, local);
    }
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
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Summarize(merged.bytes), DefaultWith("psk:PageOrientation[psk:Landscape]"));
}

TEST_F(ValidationTest, EmptyBaseBecomesACompleteTicketWithoutConflict) {
    const WrittenResult merged = Merge(Ticket(""), std::nullopt);
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Summarize(merged.bytes), Summarize(DefaultTicket()));
}

TEST_F(ValidationTest, NullDeltaValidatesTheBase) {
    const WrittenResult merged =
        Merge(Ticket(Sheet("psk:ISOA5", 148000, 210000)), std::nullopt, kPTPageScope);
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Line(merged.bytes, "PageMediaSize"),
              "psk:PageMediaSize[psk:ISOA5(psk:MediaSizeWidth=148000,psk:MediaSizeHeight=210000)]");
}

TEST_F(ValidationTest, EntriesOfAWiderScopeAreIgnoredInTheDeltaAndLeftOutOfTheResult) {
    const std::string delta =
        Ticket(Select("psk:JobInputBin", "psk:Manual") + Select("psk:DocumentCollate", "psk:Uncollated") +
               Select("psk:PageOrientation", "psk:Landscape") + Parameter("psk:JobCopiesAllDocuments", "5") +
               TextProperty("psk:JobName", "x"));
    const Lines page = Summarize(MergeWithDefault(delta, kPTPageScope).bytes);
    ASSERT_EQ(page.size(), 6U);
    for (const std::string& line : page) EXPECT_EQ(line.substr(0, 8), "psk:Page");
    EXPECT_EQ(page[2], "psk:PageOrientation[psk:Landscape]");
    const Lines document = Summarize(MergeWithDefault(delta, kPTDocumentScope).bytes);
    ASSERT_EQ(document.size(), 7U);
    EXPECT_EQ(document[0], "psk:DocumentCollate[psk:Uncollated]");
    EXPECT_EQ(Line(MergeWithDefault(delta, kPTJobScope).bytes, "JobCopiesAllDocuments"),
              "psk:JobCopiesAllDocuments=5");
}

TEST_F(ValidationTest, FeatureIsReplacedWholeWithItsSubFeatures) {
    const std::string base =
        Ticket(R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
               Scored("psk:PagesPerSheet", "integer", "4") + "</psf:Option>" +
               Select("psk:PresentationDirection", "psk:BottomRight") + "</psf:Feature>");
    const std::string delta =
        Ticket(R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
               Scored("psk:PagesPerSheet", "integer", "2") + "</psf:Option></psf:Feature>");
    EXPECT_EQ(Line(Merge(base, std::nullopt).bytes, "JobNUpAllDocumentsContiguously"),
              "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=4)]"
              "{psk:PresentationDirection[psk:BottomRight]}");
    EXPECT_EQ(Line(Merge(base, delta).bytes, "JobNUpAllDocumentsContiguously"),
              "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=2)]"
              "{psk:PresentationDirection[psk:RightBottom]}");
}

TEST_F(ValidationTest, ParametersAreMergedIndependentlyOfTheOptionsThatReferToThem) {
    const std::string square =
        Select("psk:PageScaling", "psk:CustomSquare", Reference("psk:Scale", "psk:PageScalingScale"));
    const std::string base = Ticket(square + Parameter("psk:PageScalingScale", "50"));
    EXPECT_EQ(Line(Merge(base, Ticket(square)).bytes, "PageScalingScale"), "psk:PageScalingScale=50");
    EXPECT_EQ(Line(Merge(base, Ticket(Parameter("psk:PageScalingScale", "75"))).bytes, "PageScalingScale"),
              "psk:PageScalingScale=75");
}

TEST_F(ValidationTest, NameWithoutScopeIsAJobNameAndNoted) {
    const WrittenResult merged = MergeWithDefault(Ticket(TextProperty("psk:Title", "x")), kPTPageScope);
    EXPECT_EQ(Line(merged.bytes, "Title"), "");
    EXPECT_EQ(Report().notes, (Lines{"the name Title begins with none of Job, Document and Page"}));
    EXPECT_EQ(Line(MergeWithDefault(Ticket(TextProperty("psk:Title", "x"))).bytes, "Title"), "#psk:Title=x");
}

// Namespaces.

TEST_F(ValidationTest, ForeignNamespaceIsRemovedWithDescendantsAndWithoutConflict) {
    const std::string delta = Select("acme:PageStamp", "acme:Confidential", TextProperty("psk:X", "y")) +
                              Parameter("acme:PageStampAngle", "45") + TextProperty("acme:JobOwner", "me");
    const WrittenResult merged = MergeWithDefault(Ticket(delta));
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Summarize(merged.bytes), Summarize(DefaultTicket()));
    EXPECT_EQ(merged.bytes.find("acme"), std::string::npos);
}

TEST_F(ValidationTest, ForeignNamespaceIsRemovedAtAnyLevel) {
    const std::string nested = R"(<psf:Feature name="psk:PageScaling"><psf:Option name="psk:None"/>)" +
                               Select("acme:Extra", "acme:On") + "</psf:Feature>";
    EXPECT_EQ(LineAfter(nested, "PageScaling", NoConflict),
              "psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}");
    // Without its only option the feature is one without an option.
    EXPECT_EQ(LineAfter(Select("psk:PageOrientation", "acme:Upright"), "PageOrientation", NoConflict),
              "psk:PageOrientation[psk:Portrait]");
}

TEST_F(ValidationTest, PrivateFeatureOfTheDeviceIsValidatedLikeAnyOther) {
    EXPECT_EQ(LineAfter(Select("dev:JobTonerSave", "dev:On"), "JobTonerSave", NoConflict),
              "dev:JobTonerSave[dev:On]");
    EXPECT_EQ(LineAfter(Select("dev:JobTonerSave", "dev:Maybe"), "JobTonerSave", ConflictResolved),
              "dev:JobTonerSave[dev:Off]");
}

TEST_F(ValidationTest, PrivateOptionOfAPublicFeatureSurvives) {
    EXPECT_EQ(LineAfter(Select("psk:JobInputBin", "dev:Tray1"), "JobInputBin", NoConflict),
              "psk:JobInputBin[dev:Tray1(psk:BinType=psk:SheetFeed,psk:FeedType=psk:Automatic,"
              "psk:MediaCapacity=psk:Standard,psk:MediaSheetCapacity=250,"
              "psk:FeedDirection=psk:ShortEdgeFirst)]");
}

TEST_F(ValidationTest, PublicFeatureThatTheDeviceLacksIsRemovedWithConflict) {
    EXPECT_EQ(LineAfter(Select("psk:PageBorderless", "psk:None"), "PageBorderless", ConflictResolved), "");
    EXPECT_EQ(LineAfter(Select("psk:DocumentDuplex", "psk:OneSided"), "DocumentDuplex", ConflictResolved),
              "");
}

TEST_F(ValidationTest, UnknownNameInAKnownNamespaceIsNoFormatError) {
    EXPECT_EQ(LineAfter(Select("psk:PageNoSuchFeature", "psk:X"), "PageNoSuchFeature", ConflictResolved), "");
    EXPECT_EQ(LineAfter(TextProperty("psk:JobNoSuchProperty", "x"), "JobNoSuchProperty", NoConflict),
              "#psk:JobNoSuchProperty=x");
    EXPECT_EQ(LineAfter(R"(<psf:Feature name="psk:PageScaling"><psf:Option name="psk:None"/>)" +
                            Select("psk:NoSuchPart", "psk:X") + "</psf:Feature>",
                        "PageScaling", ConflictResolved),
              "psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}");
}

// Options.

TEST_F(ValidationTest, UnsupportedOptionBecomesTheDefaultWithConflict) {
    EXPECT_EQ(LineAfter(Sheet("psk:ISOA3", 297000, 420000), "PageMediaSize", ConflictResolved), A4);
    EXPECT_EQ(LineAfter(Select("psk:PageOrientation", "psk:Sideways"), "PageOrientation", ConflictResolved),
              "psk:PageOrientation[psk:Portrait]");
}

TEST_F(ValidationTest, DefaultIsTheDevicesAndNotTheBases) {
    const std::string base = Ticket(Select("psk:PageOrientation", "psk:Landscape"));
    const WrittenResult merged = Merge(base, Ticket(Select("psk:PageOrientation", "psk:Sideways")));
    EXPECT_EQ(Line(merged.bytes, "PageOrientation"), "psk:PageOrientation[psk:Portrait]");
}

TEST_F(ValidationTest, OptionOfAnotherNameAndTheSameSizeIsTheDevicesWithConflict) {
    EXPECT_EQ(LineAfter(Sheet("psk:NorthAmericaNote", 215900, 279400), "PageMediaSize", ConflictResolved),
              "psk:PageMediaSize[psk:NorthAmericaLetter(psk:MediaSizeWidth=215900,"
              "psk:MediaSizeHeight=279400)]");
}

TEST_F(ValidationTest, NameCountsMoreThanNumbers) {
    EXPECT_EQ(LineAfter(Sheet("psk:ISOA4", 215900, 279400), "PageMediaSize", NoConflict), A4);
}

TEST_F(ValidationTest, UnknownSizeWithinTheCustomRangeBecomesACustomSheetOfThatSize) {
    const WrittenResult merged = MergeWithDefault(Ticket(Sheet("psk:ISOB5Envelope", 176000, 250000)));
    EXPECT_EQ(merged.result, ConflictResolved);
    EXPECT_EQ(Line(merged.bytes, "PageMediaSize"),
              "psk:PageMediaSize[psk:CustomMediaSize(psk:MediaSizeWidth=@psk:PageMediaSizeMediaSizeWidth,"
              "psk:MediaSizeHeight=@psk:PageMediaSizeMediaSizeHeight)]");
    EXPECT_EQ(Line(merged.bytes, "PageMediaSizeMediaSizeWidth"), "psk:PageMediaSizeMediaSizeWidth=176000");
    EXPECT_EQ(Line(merged.bytes, "PageMediaSizeMediaSizeHeight"), "psk:PageMediaSizeMediaSizeHeight=250000");
}

TEST_F(ValidationTest, CustomSheetKeepsItsReferencesAndParameters) {
    const std::string custom =
        Select("psk:PageMediaSize", "psk:CustomMediaSize",
               Reference("psk:MediaSizeWidth", "psk:PageMediaSizeMediaSizeWidth") +
                   Reference("psk:MediaSizeHeight", "psk:PageMediaSizeMediaSizeHeight"));
    const WrittenResult merged =
        MergeWithDefault(Ticket(custom + Parameter("psk:PageMediaSizeMediaSizeWidth", "150000") +
                                Parameter("psk:PageMediaSizeMediaSizeHeight", "200000")));
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Summarize(merged.bytes)[1], "psk:PageMediaSizeMediaSizeWidth=150000");
    EXPECT_EQ(Summarize(merged.bytes)[2], "psk:PageMediaSizeMediaSizeHeight=200000");
    EXPECT_EQ(Line(merged.bytes, "PageMediaSize"),
              "psk:PageMediaSize[psk:CustomMediaSize(psk:MediaSizeWidth=@psk:PageMediaSizeMediaSizeWidth,"
              "psk:MediaSizeHeight=@psk:PageMediaSizeMediaSizeHeight)]");
}

TEST_F(ValidationTest, CustomSheetWithLiteralNumbersGetsThemAsParameters) {
    const WrittenResult merged = MergeWithDefault(Ticket(Sheet("psk:CustomMediaSize", 150000, 200000)));
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Line(merged.bytes, "PageMediaSizeMediaSizeWidth"), "psk:PageMediaSizeMediaSizeWidth=150000");
}

TEST_F(ValidationTest, CustomSheetWithoutParametersGetsTheDefaults) {
    const WrittenResult merged = MergeWithDefault(Ticket(Select("psk:PageMediaSize", "psk:CustomMediaSize")));
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Line(merged.bytes, "PageMediaSizeMediaSizeWidth"), "psk:PageMediaSizeMediaSizeWidth=210000");
    EXPECT_EQ(Line(merged.bytes, "PageMediaSizeMediaSizeHeight"), "psk:PageMediaSizeMediaSizeHeight=297000");
}

TEST_F(ValidationTest, UnnamedOptionIsFoundByItsScoredProperties) {
    const auto perSheet = [&](const char* pages) {
        return R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
               Scored("psk:PagesPerSheet", "integer", pages) + "</psf:Option></psf:Feature>";
    };
    const char* const name = "JobNUpAllDocumentsContiguously";
    EXPECT_EQ(LineAfter(perSheet("4"), name, NoConflict),
              "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=4)]"
              "{psk:PresentationDirection[psk:RightBottom]}");
    EXPECT_EQ(LineAfter(perSheet("3"), name, ConflictResolved),
              "psk:JobNUpAllDocumentsContiguously[(psk:PagesPerSheet=1)]"
              "{psk:PresentationDirection[psk:RightBottom]}");
    const std::string resolution = R"(<psf:Feature name="psk:PageResolution"><psf:Option>)" +
                                   Scored("psk:ResolutionX", "integer", "1200") +
                                   Scored("psk:ResolutionY", "integer", "1200") +
                                   "</psf:Option></psf:Feature>";
    EXPECT_EQ(
        LineAfter(resolution + Select("psk:PageOutputColor", "psk:Monochrome"), "PageResolution", NoConflict),
        "psk:PageResolution[dev:R1200(psk:ResolutionX=1200,psk:ResolutionY=1200)]");
}

TEST_F(ValidationTest, ScoredPropertiesMatchAsNameStringOrBareWord) {
    for (const auto& [type, value] : std::vector<std::pair<std::string, std::string>>{
             {"QName", "psk:LongEdgeFirst"}, {"string", "psk:LongEdgeFirst"}, {"string", "LongEdgeFirst"}}) {
        const std::string tray =
            Select("psk:JobInputBin", "dev:Unknown", Scored("psk:FeedDirection", type, value));
        EXPECT_EQ(LineAfter(tray, "JobInputBin", ConflictResolved).substr(0, 26),
                  "psk:JobInputBin[dev:Tray2(")
            << type << value;
    }
}

TEST_F(ValidationTest, FirstOfEquallyGoodOptionsIsTaken) {
    // Manual, Tray1 and Tray2 all feed sheets.
    const std::string tray =
        Select("psk:JobInputBin", "dev:Unknown", Scored("psk:BinType", "QName", "psk:SheetFeed"));
    EXPECT_EQ(LineAfter(tray, "JobInputBin", ConflictResolved).substr(0, 27), "psk:JobInputBin[psk:Manual(");
}

TEST_F(ValidationTest, OptionThatIsNotFittedBecomesTheDefaultWithConflict) {
    EXPECT_EQ(LineAfter(Select("psk:JobInputBin", "dev:Tray3"), "JobInputBin", ConflictResolved),
              "psk:JobInputBin[psk:AutoSelect]");
    // Also when others have more in common with it.
    EXPECT_EQ(LineAfter(Select("psk:JobInputBin", "dev:Tray3",
                               Scored("psk:BinType", "QName", "psk:SheetFeed") +
                                   Scored("psk:MediaSheetCapacity", "integer", "500")),
                        "JobInputBin", ConflictResolved),
              "psk:JobInputBin[psk:AutoSelect]");
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
    EXPECT_EQ(*validated.ticket.Find(Tag::Feature, Keyword("PageOutputColor")),
              *device.defaultTicket.Find(Tag::Feature, Keyword("PageOutputColor")));
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

TEST_F(PickManyTest, KeepsSeveralOptions) { EXPECT_EQ(Chosen({"Grayscale", "Color"}), "Grayscale Color "); }

TEST_F(PickManyTest, KeepsTheIdentityOptionAlone) {
    EXPECT_EQ(Chosen({"Monochrome"}), "Monochrome ");
    EXPECT_EQ(Chosen({"Color", "Monochrome"}), "Monochrome !");
}

TEST_F(PickManyTest, DropsRepetitions) {
    EXPECT_EQ(Chosen({"Color", "Color", "Grayscale", "Color"}), "Color Grayscale ");
}

TEST_F(PickManyTest, DropsUnknownOptionsWithConflict) {
    EXPECT_EQ(Chosen({"Sepia", "Grayscale"}), "Grayscale !");
    EXPECT_EQ(Chosen({"Sepia"}), "Color !");
    EXPECT_EQ(Chosen({}), "Color ");
}

TEST_F(ValidationTest, FeatureWithoutOptionGetsTheDefaultWithoutConflict) {
    EXPECT_EQ(LineAfter(R"(<psf:Feature name="psk:PageMediaSize"/>)", "PageMediaSize", NoConflict), A4);
}

TEST_F(ValidationTest, OfSeveralOptionsTheFirstIsKeptWithConflict) {
    const std::string two =
        R"(<psf:Feature name="psk:PageOrientation"><psf:Option name="psk:Landscape"/>
<psf:Option name="psk:ReversePortrait"/></psf:Feature>)";
    EXPECT_EQ(LineAfter(two, "PageOrientation", ConflictResolved), "psk:PageOrientation[psk:Landscape]");
}

TEST_F(ValidationTest, ScoredPropertiesOfTheResultAreTheDevices) {
    EXPECT_EQ(LineAfter(Select("psk:PageOutputColor", "psk:Grayscale", Scored("psk:Extra", "integer", "1")),
                        "PageOutputColor", NoConflict),
              "psk:PageOutputColor[psk:Grayscale(psk:DeviceBitsPerPixel=8,psk:DriverBitsPerPixel=8)]");
}

// Parameters.

TEST_F(ValidationTest, ParameterThatTheDeviceLacksIsRemovedWithConflict) {
    EXPECT_EQ(
        LineAfter(Parameter("psk:DocumentCopiesAllPages", "2"), "DocumentCopiesAllPages", ConflictResolved),
        "");
}

TEST_F(ValidationTest, BadParameterValuesBecomeTheDefaultWithConflict) {
    const char* const copies = "psk:JobCopiesAllDocuments=1";
    EXPECT_EQ(
        LineAfter(Parameter("psk:JobCopiesAllDocuments", "many"), "JobCopiesAllDocuments", ConflictResolved),
        copies);
    EXPECT_EQ(
        LineAfter(Parameter("psk:JobCopiesAllDocuments", ""), "JobCopiesAllDocuments", ConflictResolved),
        copies);
    EXPECT_EQ(LineAfter(R"(<psf:ParameterInit name="psk:JobCopiesAllDocuments"/>)", "JobCopiesAllDocuments",
                        ConflictResolved),
              copies);
}

TEST_F(ValidationTest, ParametersOutOfRangeAreBroughtIntoItWithConflict) {
    EXPECT_EQ(
        LineAfter(Parameter("psk:JobCopiesAllDocuments", "1000"), "JobCopiesAllDocuments", ConflictResolved),
        "psk:JobCopiesAllDocuments=999");
    EXPECT_EQ(
        LineAfter(Parameter("psk:JobCopiesAllDocuments", "0"), "JobCopiesAllDocuments", ConflictResolved),
        "psk:JobCopiesAllDocuments=1");
}

TEST_F(ValidationTest, MissingParametersThatAreReferredToGetTheirDefaults) {
    const WrittenResult merged = MergeWithDefault(Ticket(
        Select("psk:PageScaling", "psk:Custom", Reference("psk:ScaleWidth", "psk:PageScalingScaleWidth")) +
        Parameter("psk:PageScalingScaleWidth", "5000")));
    EXPECT_EQ(merged.result, ConflictResolved);
    EXPECT_EQ(Line(merged.bytes, "PageScalingScaleWidth"), "psk:PageScalingScaleWidth=1000");
    EXPECT_EQ(Line(merged.bytes, "PageScalingScaleHeight"), "psk:PageScalingScaleHeight=100");
    EXPECT_EQ(Line(merged.bytes, "PageScalingOffsetWidth"), "psk:PageScalingOffsetWidth=0");
    EXPECT_EQ(Line(merged.bytes, "PageScalingOffsetHeight"), "psk:PageScalingOffsetHeight=0");
    EXPECT_EQ(Line(merged.bytes, "PageScalingScale"), "");
}

TEST_F(ValidationTest, MissingUnconditionalParameterGetsItsDefaultWithoutConflict) {
    const WrittenResult merged = Merge(Ticket(""), std::nullopt);
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Summarize(merged.bytes)[0], "psk:JobCopiesAllDocuments=1");
}

TEST_F(ValidationTest, ConditionalParameterWithoutReferenceStays) {
    EXPECT_EQ(LineAfter(Parameter("psk:PageScalingScale", "50"), "PageScalingScale", NoConflict),
              "psk:PageScalingScale=50");
}

// Properties.

TEST_F(ValidationTest, PropertiesOfOptionsAreStripped) {
    EXPECT_EQ(LineAfter(Select("psk:PageOrientation", "psk:Landscape", TextProperty("psk:DisplayName", "x")),
                        "PageOrientation", NoConflict),
              "psk:PageOrientation[psk:Landscape]");
}

TEST_F(ValidationTest, PropertiesOfFeaturesAndOfTheRootAreKept) {
    const std::string feature = R"(<psf:Feature name="psk:PageOrientation">)" +
                                TextProperty("psk:DisplayName", "x") +
                                R"(<psf:Option name="psk:Landscape"/></psf:Feature>)";
    EXPECT_EQ(LineAfter(feature, "PageOrientation", NoConflict),
              "psk:PageOrientation[psk:Landscape]#psk:DisplayName=x");
    EXPECT_EQ(LineAfter(TextProperty("psk:JobName", "report"), "JobName", NoConflict), "#psk:JobName=report");
    EXPECT_EQ(LineAfter(TextProperty("dev:JobOwner", "me"), "JobOwner", NoConflict), "#dev:JobOwner=me");
}

TEST_F(ValidationTest, RootPropertyOfTheDeltaReplacesTheBases) {
    const WrittenResult merged =
        Merge(Ticket(TextProperty("psk:JobName", "old")), Ticket(TextProperty("psk:JobName", "new")));
    EXPECT_EQ(Line(merged.bytes, "JobName"), "#psk:JobName=new");
}

// Constraints.

TEST_F(ValidationTest, TransparenciesAreNotPrintedOnBothSides) {
    const std::string duplex = Select("psk:JobDuplexAllDocumentsContiguously", "psk:TwoSidedLongEdge");
    for (const char* const media : {"psk:Transparency", "psk:EnvelopePlain"}) {
        EXPECT_EQ(LineAfter(duplex + Select("psk:PageMediaType", media), "JobDuplexAllDocumentsContiguously",
                            ConflictResolved),
                  "psk:JobDuplexAllDocumentsContiguously[psk:OneSided]");
    }
    EXPECT_EQ(LineAfter(duplex + Select("psk:PageMediaType", "psk:CardStock"),
                        "JobDuplexAllDocumentsContiguously", NoConflict),
              "psk:JobDuplexAllDocumentsContiguously[psk:TwoSidedLongEdge(psk:DuplexMode=psk:Automatic)]");
}

TEST_F(ValidationTest, TrayTwoTakesLargeSheetsOnly) {
    const std::string tray = Select("psk:JobInputBin", "dev:Tray2");
    EXPECT_EQ(LineAfter(tray + Select("psk:PageMediaSize", "psk:ISOA5"), "JobInputBin", ConflictResolved),
              "psk:JobInputBin[psk:AutoSelect]");
    EXPECT_EQ(
        LineAfter(tray + Select("psk:PageMediaSize", "psk:NorthAmericaLegal"), "JobInputBin", NoConflict)
            .substr(0, 26),
        "psk:JobInputBin[dev:Tray2(");
}

TEST_F(ValidationTest, TrayOneTakesNoEnvelopesAndNoCustomSheets) {
    for (const char* const size :
         {"psk:CustomMediaSize", "psk:ISODLEnvelope", "psk:NorthAmericaNumber10Envelope"}) {
        EXPECT_EQ(LineAfter(Select("psk:JobInputBin", "dev:Tray1") + Select("psk:PageMediaSize", size),
                            "JobInputBin", ConflictResolved)
                      .substr(0, 27),
                  "psk:JobInputBin[psk:Manual(");
    }
}

TEST_F(ValidationTest, HighResolutionIsNotForColourAlsoAtPageScope) {
    const std::string delta = Ticket(Select("psk:PageResolution", "dev:R1200"));
    const WrittenResult merged = MergeWithDefault(delta, kPTPageScope);
    EXPECT_EQ(merged.result, ConflictResolved);
    EXPECT_EQ(Line(merged.bytes, "PageResolution"),
              "psk:PageResolution[dev:R600(psk:ResolutionX=600,psk:ResolutionY=600)]");
}

TEST_F(ValidationTest, ParametersThatAConstraintMadeUselessGo) {
    const WrittenResult merged = MergeWithDefault(Ticket(
        R"(<psf:Feature name="psk:JobNUpAllDocumentsContiguously"><psf:Option>)" +
        Scored("psk:PagesPerSheet", "integer", "2") + "</psf:Option></psf:Feature>" +
        Select("psk:PageScaling", "psk:Custom", Reference("psk:ScaleWidth", "psk:PageScalingScaleWidth")) +
        Parameter("psk:PageScalingScaleWidth", "50") + Parameter("psk:PageScalingScale", "60")));
    EXPECT_EQ(merged.result, ConflictResolved);
    EXPECT_EQ(Line(merged.bytes, "PageScaling"),
              "psk:PageScaling[psk:None]{psk:ScaleOffsetAlignment[psk:Center]}");
    EXPECT_EQ(Line(merged.bytes, "PageScalingScaleWidth"), "");
    // No constraint ended this one's reference.
    EXPECT_EQ(Line(merged.bytes, "PageScalingScale"), "psk:PageScalingScale=60");
}

TEST_F(ValidationTest, ConstraintBetweenJobAndPageIsNotSeenAtPageScope) {
    const std::string job = Ticket(Select("psk:JobInputBin", "dev:Tray2"));
    EXPECT_EQ(Merge(job, Ticket(Select("psk:PageMediaSize", "psk:ISOA5")), kPTPageScope).result, NoConflict);
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
                EXPECT_EQ(again.result, NoConflict) << setting << delta;
                EXPECT_EQ(Summarize(again.bytes), Summarize(merged.bytes)) << setting << delta;
            }
        }
    }
}

}  // namespace
}  // namespace devkit::prntvpt
