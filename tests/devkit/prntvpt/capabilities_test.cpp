#include "devkit/prntvpt/merge/capabilities.h"

#include <map>

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "memorystream.h"
#include "providertest.h"
#include "ticketsummary.h"

namespace devkit::prntvpt {
namespace {

using Numbers = std::vector<std::int64_t>;
using Names = std::vector<std::string>;

[[nodiscard]] std::string Select(const std::string& feature, const std::string& option) {
    return "<psf:Feature name=\"" + feature + "\"><psf:Option name=\"" + option + "\"/></psf:Feature>";
}

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
        EXPECT_EQ(written.result, S_OK);
        return Imageable(written.bytes);
    }
};

TEST_F(CapabilitiesTest, OfTheDefaultTicketAreTheModelsOwnButForTheMarks) {
    const WrittenResult written = Capabilities();
    EXPECT_EQ(written.result, S_OK);
    EXPECT_EQ(written.error, std::nullopt);
    Element expected = Read(ReadFile(DeviceFolder("simprinter") / "capabilities.xml"));
    // The default ticket prints in colour, and that is not for the high resolution.
    for (Element& option : expected.Find(Tag::Feature, Keyword("PageResolution"))->children) {
        if (option.name && option.name->local == "R1200") option.constrained = Keyword("PrintTicketSettings");
    }
    EXPECT_TRUE(Read(written.bytes) == expected);
}

TEST_F(CapabilitiesTest, NullTicketIsTheDefaultOne) {
    EXPECT_EQ(Capabilities().bytes, Capabilities(DefaultTicket()).bytes);
}

TEST_F(CapabilitiesTest, ImageableSizeFollowsSheetAndOrientation) {
    EXPECT_EQ(ImageableFor(""), (Numbers{210000, 297000, 4233, 4233, 201534, 288534}));
    EXPECT_EQ(ImageableFor(Select("psk:PageOrientation", "psk:Landscape")),
              (Numbers{297000, 210000, 4233, 4233, 288534, 201534}));
    EXPECT_EQ(ImageableFor(Select("psk:PageMediaSize", "psk:ISODLEnvelope")),
              (Numbers{110000, 220000, 4233, 12700, 101534, 194600}));
    EXPECT_EQ(ImageableFor(Select("psk:PageMediaSize", "psk:ISODLEnvelope") +
                           Select("psk:PageOrientation", "psk:ReverseLandscape")),
              (Numbers{220000, 110000, 12700, 4233, 194600, 101534}));
    EXPECT_EQ(ImageableFor(Select("psk:PageMediaSize", "psk:CustomMediaSize") +
                           R"(<psf:ParameterInit name="psk:PageMediaSizeMediaSizeWidth"><psf:Value
 xsi:type="xsd:integer">100000</psf:Value></psf:ParameterInit>)"),
              (Numbers{100000, 297000, 4233, 4233, 91534, 288534}));
}

TEST_F(CapabilitiesTest, AsymmetricMarginsTurn) {
    Use({}, "asymmetric");
    EXPECT_EQ(ImageableFor(Select("psk:PageOrientation", "psk:Portrait")),
              (Numbers{210000, 297000, 3000, 5000, 203000, 279300}));
    EXPECT_EQ(ImageableFor(Select("psk:PageOrientation", "psk:Landscape")),
              (Numbers{297000, 210000, 12700, 3000, 279300, 203000}));
    EXPECT_EQ(ImageableFor(Select("psk:PageOrientation", "psk:ReverseLandscape")),
              (Numbers{297000, 210000, 5000, 4000, 279300, 203000}));
}

TEST_F(CapabilitiesTest, ImageablePortraitNeverTurns) {
    Use({"imageable=portrait"});
    EXPECT_EQ(ImageableFor(Select("psk:PageOrientation", "psk:Landscape")),
              (Numbers{210000, 297000, 4233, 4233, 201534, 288534}));
}

TEST_F(CapabilitiesTest, ImageableAbsentIsNotThere) {
    Use({"imageable=absent"});
    EXPECT_EQ(ImageableFor(""), Numbers());
}

TEST_F(CapabilitiesTest, TicketIsValidatedFirst) {
    EXPECT_EQ(ImageableFor(Select("psk:PageMediaSize", "psk:ISOA3")),
              (Numbers{210000, 297000, 4233, 4233, 201534, 288534}));
}

TEST_F(CapabilitiesTest, OptionsThatAConstraintBlocksAreMarked) {
    EXPECT_EQ(Blocked(Capabilities().bytes), (Names{"PageResolution/R1200"}));
    const std::string transparency = Ticket(Select("psk:PageMediaType", "psk:Transparency") +
                                            Select("psk:PageOutputColor", "psk:Monochrome"));
    EXPECT_EQ(Blocked(Capabilities(transparency).bytes),
              (Names{"JobDuplexAllDocumentsContiguously/TwoSidedLongEdge",
                     "JobDuplexAllDocumentsContiguously/TwoSidedShortEdge"}));
}

TEST_F(CapabilitiesTest, BlockedOptionsShowFromBothSides) {
    const std::string duplex =
        Ticket(Select("psk:JobDuplexAllDocumentsContiguously", "psk:TwoSidedLongEdge") +
               Select("psk:JobInputBin", "dev:Tray1") + Select("psk:PageMediaSize", "psk:ISOA5"));
    EXPECT_EQ(Blocked(Capabilities(duplex).bytes),
              (Names{"JobInputBin/Tray2", "PageMediaSize/ISODLEnvelope",
                     "PageMediaSize/NorthAmericaNumber10Envelope", "PageMediaSize/CustomMediaSize",
                     "PageMediaType/Transparency", "PageMediaType/EnvelopePlain", "PageResolution/R1200"}));
}

TEST(CapabilitiesMarks, StrongerConstraintsOfTheModelStay) {
    Device device = LoadDevice(DeviceFolder("simprinter"));
    const QName tray{std::string(DeviceUri), "Tray3"};
    device.constraints = {{{Condition::Kind::OneOf, Keyword("JobInputBin"), {tray}, {}, 0},
                           {Condition::Kind::OneOf, Keyword("PageOrientation"), {Keyword("Portrait")}, {}, 0},
                           Keyword("JobInputBin"),
                           Keyword("AutoSelect")}};
    const Element marked = CapabilitiesFor(device, Switches(), device.defaultTicket);
    for (const Element& option : marked.Find(Tag::Feature, Keyword("JobInputBin"))->children) {
        if (option.name != tray) continue;
        EXPECT_EQ(option.constrained, Keyword("DeviceSettings"));
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
    EXPECT_EQ(dependent, plain);
}

TEST_F(CapabilitiesTest, BadTicketIsRefusedAsATicket) {
    const WrittenResult refused = Capabilities("<x/>");
    EXPECT_EQ(refused.result, BadBase);
    EXPECT_EQ(refused.error, L"Print ticket: The root element is not PrintTicket");
    EXPECT_EQ(refused.bytes, "");
    EXPECT_EQ(Capabilities("").error, L"Print ticket: empty");
}

TEST_F(CapabilitiesTest, StreamsAreReadAndWrittenFromWhereTheyStand) {
    const std::string ticket = Ticket(Select("psk:PageOrientation", "psk:Landscape"));
    const auto input = MemoryStream::Make("junk" + ticket, 4);
    const auto output = MemoryStream::Make("1234", 4);
    ASSERT_EQ(m_provider.GetPrintCapabilities(m_handle, input.Get(), output.Get(), nullptr), S_OK);
    EXPECT_EQ(input->Position(), 4 + ticket.size());
    EXPECT_EQ(output->Position(), output->Bytes().size());
    EXPECT_EQ(output->Bytes().substr(0, 9), "1234<?xml");
    EXPECT_EQ(input->Seeks() + output->Seeks(), 0);
    EXPECT_EQ(input->References(), 1U);
    EXPECT_EQ(output->References(), 1U);
}

}  // namespace
}  // namespace devkit::prntvpt
