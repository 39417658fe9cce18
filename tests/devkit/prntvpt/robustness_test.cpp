#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <utility>

#include "memorystream.h"
#include "providertest.h"
#include "tickets.h"

// Whatever a caller hands over, the provider answers with one of a few codes, and what it calls a ticket is
// one.

namespace devkit::prntvpt {
namespace {

using namespace tests;

class RobustnessTest : public ProviderTest {};

TEST_F(RobustnessTest, EveryFailingStreamCallFailsTheMerge) {
    Use({});
    const std::string ticket = DefaultTicket();
    const std::string delta = Ticket("");
    HRESULT result = E_PENDING;
    int calls = 0;
    for (; result != kNoConflict; ++calls) {
        ASSERT_LT(calls, 1000);
        const auto counter = std::make_shared<int>(calls);
        const std::array streams{MemoryStream::Make(ticket), MemoryStream::Make(delta), MemoryStream::Make()};
        for (const auto& stream : streams) {
            stream->LimitBlocks(100);
            stream->FailAtZero(counter);
        }
        result = m_provider.MergeAndValidatePrintTicket(m_handle, streams[0].Get(), streams[1].Get(),
                                                        kPTJobScope, streams[2].Get(), nullptr);
        EXPECT_TRUE(result == kNoConflict || result == STG_E_INVALIDFUNCTION) << result;
        EXPECT_EQ(ticket.substr(0, streams[2]->Bytes().size()), streams[2]->Bytes());
    }
    // Reading both tickets to their ends and writing the result, in blocks of a hundred bytes.
    const auto blocks = [](const std::string& text) { return static_cast<int>((text.size() + 99) / 100); };
    EXPECT_EQ(blocks(ticket) + 1 + blocks(delta) + 1 + blocks(ticket), calls - 1);
}

// Cuts, doubles, moves and overwrites bytes, some of them by what tickets are made of.
class Mutator {
  public:
    explicit Mutator(unsigned seed) : m_random(seed) {}

    [[nodiscard]] std::string Mutate(std::string text) {
        const std::size_t changes = 1 + Pick(4);
        for (std::size_t change = 0; change < changes; ++change) {
            const std::size_t at = Pick(text.size());
            const std::size_t length = 1 + Pick(40);
            switch (Pick(5)) {
                case 0:
                    text.erase(at, length);
                    break;
                case 1:
                    text.insert(at, text.substr(Pick(text.size()), length));
                    break;
                case 2:
                    text[at] = static_cast<char>(Pick(256));
                    break;
                case 3:
                    text.insert(at, kWords[Pick(kWords.size())]);
                    break;
                default:
                    text.replace(at, length, kWords[Pick(kWords.size())]);
                    break;
            }
            if (text.empty()) text = " ";
        }
        return text;
    }

  private:
    static constexpr std::array<const char*, 16> kWords{"<",
                                                        ">",
                                                        "\"",
                                                        "&",
                                                        "psk:",
                                                        "dev:",
                                                        "acme:",
                                                        ":",
                                                        "99999999999999999999",
                                                        "-1",
                                                        "<psf:Feature name=\"",
                                                        "<psf:Option/>",
                                                        "<psf:Value>",
                                                        "</psf:Value>",
                                                        "<!--",
                                                        "<!DOCTYPE a>"};

    [[nodiscard]] std::size_t Pick(std::size_t count) { return m_random() % count; }

    std::mt19937 m_random;
};

TEST_F(RobustnessTest, MutatedTicketsAreRefusedOrMadeValid) {
    Use({});
    const std::string plain = DefaultTicket();
    Use({"prefixes=local", "whitespace=comments"});
    const std::string local = DefaultTicket();
    Use({});
    int merged = 0;
    for (unsigned seed = 0; seed < 1000; ++seed) {
        const std::string delta = Mutator(seed).Mutate(seed % 2 == 0 ? plain : local);
        const WrittenResult result = Merge(plain, delta);
        if (result.result == kBadDelta) {
            EXPECT_EQ("", result.bytes) << seed;
            EXPECT_TRUE(result.error && result.error->starts_with(L"Delta ticket: ")) << seed;
            continue;
        }
        ++merged;
        EXPECT_TRUE(result.result == kNoConflict || result.result == kConflictResolved) << seed;
        const WrittenResult again = Merge(result.bytes, std::nullopt);
        EXPECT_EQ(kNoConflict, again.result) << seed;
        EXPECT_EQ(result.bytes, again.bytes) << seed;
    }
    // Neither outcome is rare.
    EXPECT_GT(merged, 20);
    EXPECT_LT(merged, 980);
}

// Tickets that the framework allows, of names and values that fit a device, nearly fit it, or do not at all.
class TicketMaker {
  public:
    explicit TicketMaker(unsigned seed) : m_random(seed) {}

    [[nodiscard]] std::string Make() {
        std::string children;
        for (const char* const feature : kFeatures) {
            if (Pick(3) == 0) children += Feature(feature, Pick(4) == 0);
        }
        for (const char* const parameter : kParameters) {
            if (Pick(3) == 0) children += Valued("ParameterInit", parameter);
        }
        if (Pick(2) == 0) children += Valued("Property", "psk:JobName");
        if (Pick(4) == 0) children += Valued("Property", "acme:PageNote");
        return Ticket(children);
    }

  private:
    static constexpr std::array kFeatures{"psk:JobInputBin",
                                          "psk:PageInputBin",
                                          "psk:JobDuplexAllDocumentsContiguously",
                                          "psk:DocumentCollate",
                                          "psk:PageMediaSize",
                                          "psk:PageMediaType",
                                          "psk:PageOrientation",
                                          "psk:PageOutputColor",
                                          "psk:PageResolution",
                                          "psk:PageScaling",
                                          "dev:JobTonerSave",
                                          "acme:PageStamp",
                                          "psk:PageBorderless",
                                          "psk:JobNUpAllDocumentsContiguously"};
    static constexpr std::array kOptions{
        "psk:AutoSelect", "psk:Manual",   "dev:Tray1",         "dev:Tray2",        "dev:Tray3",
        "psk:OneSided",   "psk:Collated", "psk:ISOA4",         "psk:ISOA3",        "psk:ISOA5",
        "dev:Square8",    "psk:Plain",    "psk:ISODLEnvelope", "psk:Transparency", "psk:CustomMediaSize",
        "psk:Landscape",  "psk:Portrait", "psk:Color",         "psk:Monochrome",   "psk:TwoSidedLongEdge",
        "dev:R600",       "dev:R1200",    "psk:None",          "psk:Custom",       "psk:CustomSquare",
        "dev:On",         "psk:Nonsense", "dev:Off",           "acme:On",          "psk:EnvelopePlain"};
    static constexpr std::array kProperties{
        "psk:MediaSizeWidth",    "psk:MediaSizeHeight", "psk:PagesPerSheet", "psk:FeedDirection",
        "psk:BinType",           "psk:ResolutionX",     "psk:ScaleWidth",    "acme:Ink",
        "psk:MediaSheetCapacity"};
    static constexpr std::array kParameters{
        "psk:JobCopiesAllDocuments", "psk:PageMediaSizeMediaSizeWidth", "psk:PageMediaSizeMediaSizeHeight",
        "psk:PageScalingScale",      "psk:PageScalingScaleWidth",       "psk:PageScalingOffsetWidth",
        "acme:PageStampAngle",       "psk:DocumentCopiesAllPages",      "psk:PageNothing"};
    static constexpr std::array kValues{
        "0",      "1",      "2",  "4",    "100", "5000",          "210000",
        "148000", "297000", "-1", "wide", "",    "LongEdgeFirst", "99999999999999999999"};

    [[nodiscard]] std::string Feature(const std::string& name, bool nested) {
        std::string text = "<psf:Feature name=\"" + name + "\">";
        if (Pick(8) != 0) text += Option();
        if (Pick(8) == 0) text += Option();
        if (nested) {
            text += Feature(Pick(2) == 0 ? "psk:ScaleOffsetAlignment" : "psk:PresentationDirection", false);
        }
        return text + "</psf:Feature>";
    }
    [[nodiscard]] std::string Option() {
        std::string text = "<psf:Option";
        if (Pick(5) != 0) text += std::string(" name=\"") + kOptions[Pick(kOptions.size())] + "\"";
        text += ">";
        for (const char* const property : kProperties) {
            if (Pick(4) != 0) continue;
            text += Pick(4) == 0 ? Referring(property) : Valued("ScoredProperty", property);
        }
        return text + "</psf:Option>";
    }
    [[nodiscard]] std::string Referring(const std::string& name) {
        return "<psf:ScoredProperty name=\"" + name + "\"><psf:ParameterRef name=\"" +
               kParameters[Pick(kParameters.size())] + "\"/></psf:ScoredProperty>";
    }
    [[nodiscard]] std::string Valued(const std::string& element, const std::string& name) {
        const std::string type = Pick(2) == 0 ? "integer" : "string";
        return "<psf:" + element + " name=\"" + name + "\"><psf:Value xsi:type=\"xsd:" + type + "\">" +
               kValues[Pick(kValues.size())] + "</psf:Value></psf:" + element + ">";
    }
    [[nodiscard]] std::size_t Pick(std::size_t count) { return m_random() % count; }

    std::mt19937 m_random;
};

// Whether a ticket has an entry for each of the other's.
[[nodiscard]] bool Covers(const std::string& ticket, const std::string& other) {
    const std::vector<std::string> lines = Summarize(ticket);
    for (const std::string& line : Summarize(other)) {
        const std::string name = line.substr(0, line.find_first_of("[=") + 1);
        const bool found = std::any_of(lines.begin(), lines.end(),
                                       [&](const std::string& entry) { return entry.starts_with(name); });
        if (!found) return false;
    }
    return true;
}

TEST_F(RobustnessTest, WhateverIsAskedForTheResultIsCompleteAndAFixpointOfItsScope) {
    const std::array<std::vector<std::string>, 6> settings{{{},
                                                            {"private=strict", "strict=options"},
                                                            {"private=all", "order=input"},
                                                            {"orphans=prune", "option-props=keep-perfect"},
                                                            {"fallback=nearest", "bins=page"},
                                                            {"private-size-names=1", "no-scaling=1"}}};
    for (const std::vector<std::string>& switches : settings) {
        Use(switches);
        for (const EPrintTicketScope scope : {kPTPageScope, kPTDocumentScope, kPTJobScope}) {
            const std::string least = Merge(Ticket(""), std::nullopt, scope).bytes;
            for (unsigned seed = 0; seed < 60; ++seed) {
                TicketMaker maker(seed);
                const std::string base = maker.Make();
                const WrittenResult merged = Merge(base, maker.Make(), scope);
                ASSERT_TRUE(merged.result == kNoConflict || merged.result == kConflictResolved) << seed;
                const WrittenResult again = Merge(merged.bytes, std::nullopt, scope);
                EXPECT_EQ(kNoConflict, again.result) << seed;
                EXPECT_EQ(merged.bytes, again.bytes) << seed;
                EXPECT_TRUE(Covers(merged.bytes, least)) << seed;
            }
        }
    }
}

TEST_F(RobustnessTest, LargeTicketsAreMergedWhole) {
    Use({"private=all"});
    std::string features;
    for (int index = 0; index < 5000; ++index) {
        features += "<psf:Feature name=\"acme:PageF" + std::to_string(index) +
                    "\"><psf:Option name=\"acme:On\"/></psf:Feature>";
    }
    const WrittenResult merged = Merge(Ticket(features), Ticket(features));
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(5000U + 12U, Summarize(merged.bytes).size());
}

}  // namespace
}  // namespace devkit::prntvpt
