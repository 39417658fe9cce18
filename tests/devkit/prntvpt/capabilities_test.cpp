#include "devkit/prntvpt/merge/capabilities.h"

#include <map>

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "memorystream.h"
#include "providertest.h"
#include "tickets.h"

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

using Numbers = std::vector<std::int64_t>;
using Names = std::vector<std::string>;

[[nodiscard]] Element Read(std::string_view bytes) {
    return ReadFramework(bytes, Tag::PrintCapabilities).root;
}

// Width, height, origin and extent of PageImageableSize; empty when there is none.
[[nodiscard]] Numbers Imageable(std::string_view bytes) {
    const Element root = Read(bytes);
    const Element* const pSize = root.Find(Tag::Property, Keyword("PageImageableSize"));
    if (pSize == nullptr) return {};
    const Element* const pArea = pSize->Find(Tag::Property, Keyword("ImageableArea"));
    const auto number = [](const Element* pParent, const char* name) {
        return ToInteger(*pParent->FindProperty(Keyword(name))).value();
    };
    return {number(pSize, "ImageableSizeWidth"), number(pSize, "ImageableSizeHeight"),
            number(pArea, "OriginWidth"),        number(pArea, "OriginHeight"),
            number(pArea, "ExtentWidth"),        number(pArea, "ExtentHeight")};
}

// The options that the ticket blocks, as "Feature/Option".
void CollectBlocked(const Element& element, Names& names) {
    for (const Element& child : element.children) {
        if (child.tag == Tag::Option && child.constrained == Keyword("PrintTicketSettings")) {
            names.push_back(element.name->local + "/" + (child.name ? child.name->local : "-"));
        }
        CollectBlocked(child, names);
    }
}

[[nodiscard]] Names Blocked(std::string_view bytes) {
    Names names;
    CollectBlocked(Read(bytes), names);
    return names;
}

class CapabilitiesTest : public ProviderTest {
  protected:
    void SetUp() override { Use({}); }
    [[nodiscard]] Numbers ImageableFor(const std::string& ticket) {
        const WrittenResult written = Capabilities(Ticket(ticket));
        EXPECT_EQ(S_OK, written.result);
        return Imageable(written.bytes);
    }
};

TEST_F(CapabilitiesTest, OfTheDefaultTicketAreTheModelsOwnButForTheMarks) {
    const WrittenResult written = Capabilities();
    EXPECT_EQ(S_OK, written.result);
    EXPECT_EQ(std::nullopt, written.error);
    Element expected = Read(ReadFile(DeviceFolder("simprinter") / "capabilities.xml"));
    // The default ticket prints in colour, and that is not for the high resolution.
    for (Element& option : expected.Find(Tag::Feature, Keyword("PageResolution"))->children) {
        if (option.name && option.name->local == "R1200") option.constrained = Keyword("PrintTicketSettings");
    }
    EXPECT_TRUE(Read(written.bytes) == expected);
}

TEST_F(CapabilitiesTest, NullTicketIsTheDefaultOne) {
    EXPECT_EQ(Capabilities(DefaultTicket()).bytes, Capabilities().bytes);
}

TEST_F(CapabilitiesTest, ImageableSizeFollowsSheetAndOrientation) {
    EXPECT_EQ((Numbers{210000, 297000, 4233, 4233, 201534, 288534}), ImageableFor(""));
    EXPECT_EQ((Numbers{297000, 210000, 4233, 4233, 288534, 201534}),
              ImageableFor(Select("psk:PageOrientation", "psk:Landscape")));
    EXPECT_EQ((Numbers{110000, 220000, 4233, 12700, 101534, 194600}),
              ImageableFor(Select("psk:PageMediaSize", "psk:ISODLEnvelope")));
    EXPECT_EQ((Numbers{220000, 110000, 12700, 4233, 194600, 101534}),
              ImageableFor(Select("psk:PageMediaSize", "psk:ISODLEnvelope") +
                           Select("psk:PageOrientation", "psk:ReverseLandscape")));
    EXPECT_EQ((Numbers{100000, 297000, 4233, 4233, 91534, 288534}),
              ImageableFor(Select("psk:PageMediaSize", "psk:CustomMediaSize") +
                           R"(<psf:ParameterInit name="psk:PageMediaSizeMediaSizeWidth"><psf:Value
 xsi:type="xsd:integer">100000</psf:Value></psf:ParameterInit>)"));
}

TEST_F(CapabilitiesTest, AsymmetricMarginsTurn) {
    Use({}, "asymmetric");
    EXPECT_EQ((Numbers{210000, 297000, 3000, 5000, 203000, 279300}),
              ImageableFor(Select("psk:PageOrientation", "psk:Portrait")));
    EXPECT_EQ((Numbers{297000, 210000, 12700, 3000, 279300, 203000}),
              ImageableFor(Select("psk:PageOrientation", "psk:Landscape")));
    EXPECT_EQ((Numbers{297000, 210000, 5000, 4000, 279300, 203000}),
              ImageableFor(Select("psk:PageOrientation", "psk:ReverseLandscape")));
}

TEST_F(CapabilitiesTest, ImageablePortraitNeverTurns) {
    Use({"imageable=portrait"});
    EXPECT_EQ((Numbers{210000, 297000, 4233, 4233, 201534, 288534}),
              ImageableFor(Select("psk:PageOrientation", "psk:Landscape")));
}

TEST_F(CapabilitiesTest, ImageableAbsentIsNotThere) {
    Use({"imageable=absent"});
    EXPECT_EQ(Numbers(), ImageableFor(""));
}

TEST_F(CapabilitiesTest, TicketIsValidatedFirst) {
    EXPECT_EQ((Numbers{210000, 297000, 4233, 4233, 201534, 288534}),
              ImageableFor(Select("psk:PageMediaSize", "psk:ISOA3")));
}

TEST_F(CapabilitiesTest, OptionsThatAConstraintBlocksAreMarked) {
    EXPECT_EQ((Names{"PageResolution/R1200"}), Blocked(Capabilities().bytes));
    const std::string transparency = Ticket(Select("psk:PageMediaType", "psk:Transparency") +
                                            Select("psk:PageOutputColor", "psk:Monochrome"));
    EXPECT_EQ((Names{"JobDuplexAllDocumentsContiguously/TwoSidedLongEdge",
                     "JobDuplexAllDocumentsContiguously/TwoSidedShortEdge"}),
              Blocked(Capabilities(transparency).bytes));
}

TEST_F(CapabilitiesTest, BlockedOptionsShowFromBothSides) {
    const std::string duplex =
        Ticket(Select("psk:JobDuplexAllDocumentsContiguously", "psk:TwoSidedLongEdge") +
               Select("psk:JobInputBin", "dev:Tray1") + Select("psk:PageMediaSize", "psk:ISOA5"));
    EXPECT_EQ((Names{"JobInputBin/Tray2", "PageMediaSize/ISODLEnvelope",
                     "PageMediaSize/NorthAmericaNumber10Envelope", "PageMediaSize/CustomMediaSize",
                     "PageMediaType/Transparency", "PageMediaType/EnvelopePlain", "PageResolution/R1200"}),
              Blocked(Capabilities(duplex).bytes));
}

TEST(CapabilitiesMarks, StrongerConstraintsOfTheModelStay) {
    Device device = LoadDevice(DeviceFolder("simprinter"));
    const QName tray{std::string(kDeviceUri), "Tray3"};
    device.constraints = {{{Condition::Kind::OneOf, Keyword("JobInputBin"), {tray}, {}, 0},
                           {Condition::Kind::OneOf, Keyword("PageOrientation"), {Keyword("Portrait")}, {}, 0},
                           Keyword("JobInputBin"),
                           Keyword("AutoSelect")}};
    const Element marked = CapabilitiesFor(device, Switches(), device.defaultTicket);
    for (const Element& option : marked.Find(Tag::Feature, Keyword("JobInputBin"))->children) {
        if (option.name != tray) continue;
        EXPECT_EQ(Keyword("DeviceSettings"), option.constrained);
    }
}

TEST_F(CapabilitiesTest, OnlyMarksAndPropertiesDependOnTheTicket) {
    const std::string ticket =
        Ticket(Select("psk:JobInputBin", "dev:Tray2") + Select("psk:PageMediaType", "psk:Transparency") +
               Select("psk:PageScaling", "psk:Custom"));
    Element plain = Read(Capabilities().bytes);
    Element dependent = Read(Capabilities(ticket).bytes);
    const auto normalize = [](Element& root) {
        const auto clear = [](auto& self, Element& element) -> void {
            element.constrained.reset();
            for (Element& child : element.children) self(self, child);
        };
        clear(clear, root);
    };
    normalize(plain);
    normalize(dependent);
    EXPECT_EQ(plain, dependent);
}

TEST_F(CapabilitiesTest, BadTicketIsRefusedAsATicket) {
    const WrittenResult refused = Capabilities("<x/>");
    EXPECT_EQ(kBadBase, refused.result);
    EXPECT_EQ(L"Print ticket: The root element is not PrintTicket", refused.error);
    EXPECT_EQ("", refused.bytes);
    EXPECT_EQ(L"Print ticket: is empty", Capabilities("").error);
}

TEST_F(CapabilitiesTest, StreamsAreReadAndWrittenFromWhereTheyStand) {
    const std::string ticket = Ticket(Select("psk:PageOrientation", "psk:Landscape"));
    const auto input = MemoryStream::Make("junk" + ticket, 4);
    const auto output = MemoryStream::Make("1234", 4);
    ASSERT_EQ(S_OK, m_provider.GetPrintCapabilities(m_handle, input.Get(), output.Get(), nullptr));
    EXPECT_EQ(4 + ticket.size(), input->Position());
    EXPECT_EQ(output->Bytes().size(), output->Position());
    EXPECT_EQ("1234<?xml", output->Bytes().substr(0, 9));
    EXPECT_EQ(0, input->Seeks() + output->Seeks());
    EXPECT_EQ(1U, input->References());
    EXPECT_EQ(1U, output->References());
}

}  // namespace
}  // namespace devkit::prntvpt
