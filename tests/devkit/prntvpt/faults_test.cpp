#include <chrono>
#include <cstdint>

#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "memorystream.h"
#include "platform/bstr.h"
#include "providertest.h"
#include "tickets.h"

// Every fault mode of the provider.

namespace devkit::prntvpt {
namespace {

using namespace printschema;

using namespace tests;

using Lines = std::vector<std::string>;

class FaultModeTest : public ProviderTest {
  protected:
    [[nodiscard]] HRESULT OpenWith(const char* fault) {
        std::string error;
        EXPECT_EQ(S_OK, m_provider.Configure(ConfigurationFor({fault}).c_str(), error)) << error;
        HPTPROVIDER handle = reinterpret_cast<HPTPROVIDER>(std::uintptr_t{1});
        const HRESULT hr = m_provider.OpenProvider(L"SimPrinter", 1, &handle);
        EXPECT_EQ(nullptr, handle);
        return hr;
    }
    [[nodiscard]] WrittenResult MergeWith(const std::vector<std::string>& switches,
                                          EPrintTicketScope scope = kPTJobScope) {
        Use(switches);
        return Merge(DefaultTicket(), Ticket(""), scope);
    }
    [[nodiscard]] WrittenResult CapabilitiesWith(const char* fault) {
        Use({fault});
        return Capabilities(DefaultTicket());
    }
};

TEST_F(FaultModeTest, OpenFaults) {
    EXPECT_EQ(0x80070005U, static_cast<std::uint32_t>(OpenWith("fault=open-denied")));
    EXPECT_EQ(0x80070709U, static_cast<std::uint32_t>(OpenWith("fault=open-gone")));
    EXPECT_EQ(0x800706BAU, static_cast<std::uint32_t>(OpenWith("fault=open-rpc")));
}

TEST_F(FaultModeTest, MergeFaultsHaveTheirCodesAndTexts) {
    const WrittenResult base = MergeWith({"fault=merge-refuse-base"});
    EXPECT_EQ(kBadBase, base.result);
    EXPECT_EQ(L"Base ticket: refused by the simulated provider", base.error);
    const WrittenResult delta = MergeWith({"fault=merge-refuse-delta"});
    EXPECT_EQ(kBadDelta, delta.result);
    EXPECT_EQ(L"Delta ticket: refused by the simulated provider", delta.error);
    const WrittenResult fail = MergeWith({"fault=merge-fail"});
    EXPECT_EQ(E_FAIL, fail.result);
    EXPECT_EQ(L"The simulated provider failed", fail.error);
    const WrittenResult memory = MergeWith({"fault=merge-oom"});
    EXPECT_EQ(E_OUTOFMEMORY, memory.result);
    EXPECT_EQ(std::nullopt, memory.error);
    EXPECT_EQ("", base.bytes + delta.bytes + fail.bytes + memory.bytes);
}

TEST_F(FaultModeTest, PlainSuccessIsAGoodMergeWithSOk) {
    const WrittenResult merged = MergeWith({"fault=s-ok"});
    EXPECT_EQ(S_OK, merged.result);
    EXPECT_EQ(DefaultTicket(), merged.bytes);
}

TEST_F(FaultModeTest, ConflictChangesOneSetting) {
    const WrittenResult merged = MergeWith({"fault=conflict"});
    EXPECT_EQ(kConflictResolved, merged.result);
    Lines expected = Summarize(DefaultTicket());
    for (std::string& line : expected) {
        if (line == "psk:PageOrientation[psk:Portrait]") line = "psk:PageOrientation[psk:Landscape]";
    }
    EXPECT_EQ(expected, Summarize(merged.bytes));
}

TEST_F(FaultModeTest, ConflictChangesTheNamedSetting) {
    const WrittenResult merged = MergeWith({"fault=conflict:psk:PageMediaSize"});
    EXPECT_EQ(kConflictResolved, merged.result);
    EXPECT_EQ("psk:PageMediaSize[psk:ISOA5(psk:MediaSizeWidth=148000,psk:MediaSizeHeight=210000)]",
              Line(merged.bytes, "PageMediaSize"));
}

TEST_F(FaultModeTest, SilentConflictDoesNotTell) {
    const WrittenResult merged = MergeWith({"fault=conflict-silent"});
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ("psk:PageOrientation[psk:Landscape]", Line(merged.bytes, "PageOrientation"));
}

TEST_F(FaultModeTest, OutputCanBeNoTicket) {
    const WrittenResult empty = MergeWith({"fault=out-empty"});
    EXPECT_EQ(kNoConflict, empty.result);
    EXPECT_EQ("", empty.bytes);
    const WrittenResult cut = MergeWith({"fault=out-truncated"});
    EXPECT_EQ(kNoConflict, cut.result);
    const std::string whole = DefaultTicket();
    EXPECT_EQ(whole.substr(0, whole.size() / 2), cut.bytes);
    const WrittenResult text = MergeWith({"fault=out-notxml"});
    EXPECT_EQ(kNoConflict, text.result);
    EXPECT_EQ("This is no markup.", text.bytes);
    const WrittenResult root = MergeWith({"fault=out-wrongroot"});
    EXPECT_EQ(kNoConflict, root.result);
    EXPECT_NE(std::string::npos, root.bytes.find("<psf:PrintCapabilities "));
}

TEST_F(FaultModeTest, OutputCanDefineAFeatureTwice) {
    const WrittenResult merged = MergeWith({"fault=out-duplicate"});
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_THROW(static_cast<void>(Summarize(merged.bytes)), FormatError);
    const Element root = ReadFramework(merged.bytes, Tag::PrintTicket, Duplicates::KeepFirst).root;
    EXPECT_EQ(Summarize(DefaultTicket()), Summarize(root));
}

TEST_F(FaultModeTest, OutputCanLackAFeature) {
    const WrittenResult merged = MergeWith({"fault=out-missing:PageMediaSize"});
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(11U, Summarize(merged.bytes).size());
    EXPECT_EQ("", Line(merged.bytes, "PageMediaSize"));
}

TEST_F(FaultModeTest, OutputCanHoldAWordForANumber) {
    EXPECT_EQ("psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=wide,psk:MediaSizeHeight=297000)]",
              Line(MergeWith({"fault=out-bad-value"}).bytes, "PageMediaSize"));
    Use({"fault=out-bad-value"});
    const std::string custom = Ticket(
        R"(<psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:CustomMediaSize"/></psf:Feature>)");
    EXPECT_EQ("psk:PageMediaSizeMediaSizeWidth=wide",
              Line(MergeWithDefault(custom).bytes, "PageMediaSizeMediaSizeWidth"));
}

TEST_F(FaultModeTest, ResultCanBeRewound) {
    Use({"fault=out-rewound"});
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    EXPECT_EQ(kNoConflict, m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), nullptr, kPTJobScope,
                                                                  result.Get(), nullptr));
    EXPECT_EQ(0U, result->Position());
    EXPECT_EQ(DefaultTicket(), result->Bytes());
}

TEST_F(FaultModeTest, ShortWriteFailsHalfWay) {
    const WrittenResult merged = MergeWith({"fault=out-shortwrite"});
    EXPECT_EQ(STG_E_MEDIUMFULL, merged.result);
    EXPECT_EQ(DefaultTicket().size() / 2, merged.bytes.size());
}

TEST_F(FaultModeTest, SlowWaits) {
    Use({"fault=slow:120@2"});
    const auto time = [&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(kNoConflict, Merge(DefaultTicket(), std::nullopt).result);
        return std::chrono::steady_clock::now() - start;
    };
    // Opening was the first call, but Use has reset the counters since.
    static_cast<void>(time());
    EXPECT_GE(time(), std::chrono::milliseconds(110));
}

TEST_F(FaultModeTest, CapabilitiesFaults) {
    const WrittenResult missing = CapabilitiesWith("fault=caps-notimpl");
    EXPECT_EQ(E_NOTIMPL, missing.result);
    EXPECT_EQ(std::nullopt, missing.error);
    const WrittenResult fail = CapabilitiesWith("fault=caps-fail");
    EXPECT_EQ(E_FAIL, fail.result);
    EXPECT_EQ(L"The simulated provider failed", fail.error);
    EXPECT_EQ("", missing.bytes + fail.bytes);
    const WrittenResult none = CapabilitiesWith("fault=caps-noimageable");
    EXPECT_EQ(S_OK, none.result);
    EXPECT_EQ(std::string::npos, none.bytes.find("\"psk:PageImageableSize\""));
    const WrittenResult zero = CapabilitiesWith("fault=caps-zero-extent");
    EXPECT_EQ(S_OK, zero.result);
    const Element root = ReadFramework(zero.bytes, Tag::PrintCapabilities).root;
    const Element* const pSize = root.Find(Tag::Property, Keyword("PageImageableSize"));
    const Element* const pArea = pSize->Find(Tag::Property, Keyword("ImageableArea"));
    EXPECT_EQ(IntegerValue(0), *pArea->FindProperty(Keyword("ExtentWidth")));
    EXPECT_EQ(IntegerValue(0), *pArea->FindProperty(Keyword("ExtentHeight")));
    EXPECT_EQ(IntegerValue(4233), *pArea->FindProperty(Keyword("OriginWidth")));
    EXPECT_EQ(IntegerValue(210000), *pSize->FindProperty(Keyword("ImageableSizeWidth")));
}

TEST_F(FaultModeTest, ErrorTextCanBeMissing) {
    const WrittenResult merged = MergeWith({"fault=merge-fail", "fault=bstr-null-on-error"});
    EXPECT_EQ(E_FAIL, merged.result);
    EXPECT_EQ(std::nullopt, merged.error);
    const WrittenResult refused = Merge("<a>", std::nullopt);
    EXPECT_EQ(std::nullopt, refused.error);
}

TEST_F(FaultModeTest, SuccessCanHaveAText) {
    const WrittenResult merged = MergeWith({"fault=bstr-on-success"});
    EXPECT_EQ(kNoConflict, merged.result);
    EXPECT_EQ(L"There is nothing wrong.", merged.error);
    EXPECT_EQ(L"There is nothing wrong.", Capabilities().error);
}

TEST_F(FaultModeTest, StrikesTheNthCallOfItsScopeAlone) {
    Use({"fault=merge-fail@2:page"});
    const std::string ticket = DefaultTicket();
    EXPECT_EQ(kNoConflict, Merge(ticket, std::nullopt, kPTPageScope).result);
    EXPECT_EQ(kNoConflict, Merge(ticket, std::nullopt, kPTJobScope).result);
    EXPECT_EQ(E_FAIL, Merge(ticket, std::nullopt, kPTPageScope).result);
    EXPECT_EQ(kNoConflict, Merge(ticket, std::nullopt, kPTPageScope).result);
    m_provider.Reset();
    EXPECT_EQ(kNoConflict, Merge(ticket, std::nullopt, kPTPageScope).result);
    EXPECT_EQ(E_FAIL, Merge(ticket, std::nullopt, kPTPageScope).result);
}

TEST_F(FaultModeTest, RefusedArgumentsDoNotCount) {
    Use({"fault=merge-fail@1"});
    const auto result = MemoryStream::Make();
    EXPECT_EQ(E_INVALIDARG, m_provider.MergeAndValidatePrintTicket(m_handle, nullptr, nullptr, kPTJobScope,
                                                                   result.Get(), nullptr));
    EXPECT_EQ(E_FAIL, Merge(DefaultTicket(), std::nullopt).result);
}

}  // namespace
}  // namespace devkit::prntvpt
