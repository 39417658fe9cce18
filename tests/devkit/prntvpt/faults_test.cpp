#include <chrono>
#include <cstdint>

#include "devkit/printschema/formaterror.h"
#include "devkit/printschema/names.h"
#include "devkit/printschema/reader.h"
#include "memorystream.h"
#include "platform/bstr.h"
#include "providertest.h"
#include "ticketsummary.h"

// Every fault mode of the provider.

namespace devkit::prntvpt {
namespace {

using Lines = std::vector<std::string>;

class FaultModeTest : public ProviderTest {
  protected:
    [[nodiscard]] HRESULT OpenWith(const char* fault) {
        std::string error;
        EXPECT_EQ(m_provider.Configure(ConfigurationFor({fault}).c_str(), error), S_OK) << error;
        HPTPROVIDER handle = reinterpret_cast<HPTPROVIDER>(std::uintptr_t{1});
        const HRESULT hr = m_provider.OpenProvider(L"SimPrinter", 1, &handle);
        EXPECT_EQ(handle, nullptr);
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
    EXPECT_EQ(static_cast<std::uint32_t>(OpenWith("fault=open-denied")), 0x80070005U);
    EXPECT_EQ(static_cast<std::uint32_t>(OpenWith("fault=open-gone")), 0x80070709U);
    EXPECT_EQ(static_cast<std::uint32_t>(OpenWith("fault=open-rpc")), 0x800706BAU);
}

TEST_F(FaultModeTest, MergeFaultsHaveTheirCodesAndTexts) {
    const WrittenResult base = MergeWith({"fault=merge-refuse-base"});
    EXPECT_EQ(base.result, BadBase);
    EXPECT_EQ(base.error, L"Base ticket: refused by the simulated provider");
    const WrittenResult delta = MergeWith({"fault=merge-refuse-delta"});
    EXPECT_EQ(delta.result, BadDelta);
    EXPECT_EQ(delta.error, L"Delta ticket: refused by the simulated provider");
    const WrittenResult fail = MergeWith({"fault=merge-fail"});
    EXPECT_EQ(fail.result, E_FAIL);
    EXPECT_EQ(fail.error, L"The simulated provider failed");
    const WrittenResult memory = MergeWith({"fault=merge-oom"});
    EXPECT_EQ(memory.result, E_OUTOFMEMORY);
    EXPECT_EQ(memory.error, std::nullopt);
    EXPECT_EQ(base.bytes + delta.bytes + fail.bytes + memory.bytes, "");
}

TEST_F(FaultModeTest, PlainSuccessIsAGoodMergeWithSOk) {
    const WrittenResult merged = MergeWith({"fault=s-ok"});
    EXPECT_EQ(merged.result, S_OK);
    EXPECT_EQ(merged.bytes, DefaultTicket());
}

TEST_F(FaultModeTest, ConflictChangesOneSetting) {
    const WrittenResult merged = MergeWith({"fault=conflict"});
    EXPECT_EQ(merged.result, ConflictResolved);
    Lines expected = Summarize(DefaultTicket());
    for (std::string& line : expected) {
        if (line == "psk:PageOrientation[psk:Portrait]") line = "psk:PageOrientation[psk:Landscape]";
    }
    EXPECT_EQ(Summarize(merged.bytes), expected);
}

TEST_F(FaultModeTest, ConflictChangesTheNamedSetting) {
    const WrittenResult merged = MergeWith({"fault=conflict:psk:PageMediaSize"});
    EXPECT_EQ(merged.result, ConflictResolved);
    EXPECT_EQ(Line(merged.bytes, "PageMediaSize"),
              "psk:PageMediaSize[psk:ISOA5(psk:MediaSizeWidth=148000,psk:MediaSizeHeight=210000)]");
}

TEST_F(FaultModeTest, SilentConflictDoesNotTell) {
    const WrittenResult merged = MergeWith({"fault=conflict-silent"});
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Line(merged.bytes, "PageOrientation"), "psk:PageOrientation[psk:Landscape]");
}

TEST_F(FaultModeTest, OutputCanBeNoTicket) {
    const WrittenResult empty = MergeWith({"fault=out-empty"});
    EXPECT_EQ(empty.result, NoConflict);
    EXPECT_EQ(empty.bytes, "");
    const WrittenResult cut = MergeWith({"fault=out-truncated"});
    EXPECT_EQ(cut.result, NoConflict);
    const std::string whole = DefaultTicket();
    EXPECT_EQ(cut.bytes, whole.substr(0, whole.size() / 2));
    const WrittenResult text = MergeWith({"fault=out-notxml"});
    EXPECT_EQ(text.result, NoConflict);
    EXPECT_EQ(text.bytes, "This is no markup.");
    const WrittenResult root = MergeWith({"fault=out-wrongroot"});
    EXPECT_EQ(root.result, NoConflict);
    EXPECT_NE(root.bytes.find("<psf:PrintCapabilities "), std::string::npos);
}

TEST_F(FaultModeTest, OutputCanDefineAFeatureTwice) {
    const WrittenResult merged = MergeWith({"fault=out-duplicate"});
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_THROW(static_cast<void>(Summarize(merged.bytes)), FormatError);
    const Element root = ReadFramework(merged.bytes, Tag::PrintTicket, Duplicates::KeepFirst).root;
    EXPECT_EQ(Summarize(root), Summarize(DefaultTicket()));
}

TEST_F(FaultModeTest, OutputCanLackAFeature) {
    const WrittenResult merged = MergeWith({"fault=out-missing:PageMediaSize"});
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(Summarize(merged.bytes).size(), 11U);
    EXPECT_EQ(Line(merged.bytes, "PageMediaSize"), "");
}

TEST_F(FaultModeTest, OutputCanHoldAWordForANumber) {
    EXPECT_EQ(Line(MergeWith({"fault=out-bad-value"}).bytes, "PageMediaSize"),
              "psk:PageMediaSize[psk:ISOA4(psk:MediaSizeWidth=wide,psk:MediaSizeHeight=297000)]");
    Use({"fault=out-bad-value"});
    const std::string custom = Ticket(
        R"(<psf:Feature name="psk:PageMediaSize"><psf:Option name="psk:CustomMediaSize"/></psf:Feature>)");
    EXPECT_EQ(Line(MergeWithDefault(custom).bytes, "PageMediaSizeMediaSizeWidth"),
              "psk:PageMediaSizeMediaSizeWidth=wide");
}

TEST_F(FaultModeTest, ResultCanBeRewound) {
    Use({"fault=out-rewound"});
    const auto base = MemoryStream::Make(DefaultTicket());
    const auto result = MemoryStream::Make();
    EXPECT_EQ(m_provider.MergeAndValidatePrintTicket(m_handle, base.Get(), nullptr, kPTJobScope, result.Get(),
                                                     nullptr),
              NoConflict);
    EXPECT_EQ(result->Position(), 0U);
    EXPECT_EQ(result->Bytes(), DefaultTicket());
}

TEST_F(FaultModeTest, ShortWriteFailsHalfWay) {
    const WrittenResult merged = MergeWith({"fault=out-shortwrite"});
    EXPECT_EQ(merged.result, STG_E_MEDIUMFULL);
    EXPECT_EQ(merged.bytes.size(), DefaultTicket().size() / 2);
}

TEST_F(FaultModeTest, SlowWaits) {
    Use({"fault=slow:120@2"});
    const auto time = [&] {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Merge(DefaultTicket(), std::nullopt).result, NoConflict);
        return std::chrono::steady_clock::now() - start;
    };
    // Opening was the first call, but Use has reset the counters since.
    static_cast<void>(time());
    EXPECT_GE(time(), std::chrono::milliseconds(110));
}

TEST_F(FaultModeTest, CapabilitiesFaults) {
    const WrittenResult missing = CapabilitiesWith("fault=caps-notimpl");
    EXPECT_EQ(missing.result, E_NOTIMPL);
    EXPECT_EQ(missing.error, std::nullopt);
    const WrittenResult fail = CapabilitiesWith("fault=caps-fail");
    EXPECT_EQ(fail.result, E_FAIL);
    EXPECT_EQ(fail.error, L"The simulated provider failed");
    EXPECT_EQ(missing.bytes + fail.bytes, "");
    const WrittenResult none = CapabilitiesWith("fault=caps-noimageable");
    EXPECT_EQ(none.result, S_OK);
    EXPECT_EQ(none.bytes.find("\"psk:PageImageableSize\""), std::string::npos);
    const WrittenResult zero = CapabilitiesWith("fault=caps-zero-extent");
    EXPECT_EQ(zero.result, S_OK);
    const Element root = ReadFramework(zero.bytes, Tag::PrintCapabilities).root;
    const Element* const pSize = root.Find(Tag::Property, Keyword("PageImageableSize"));
    const Element* const pArea = pSize->Find(Tag::Property, Keyword("ImageableArea"));
    EXPECT_EQ(*pArea->FindProperty(Keyword("ExtentWidth")), IntegerValue(0));
    EXPECT_EQ(*pArea->FindProperty(Keyword("ExtentHeight")), IntegerValue(0));
    EXPECT_EQ(*pArea->FindProperty(Keyword("OriginWidth")), IntegerValue(4233));
    EXPECT_EQ(*pSize->FindProperty(Keyword("ImageableSizeWidth")), IntegerValue(210000));
}

TEST_F(FaultModeTest, ErrorTextCanBeMissing) {
    const WrittenResult merged = MergeWith({"fault=merge-fail", "fault=bstr-null-on-error"});
    EXPECT_EQ(merged.result, E_FAIL);
    EXPECT_EQ(merged.error, std::nullopt);
    const WrittenResult refused = Merge("<a>", std::nullopt);
    EXPECT_EQ(refused.error, std::nullopt);
}

TEST_F(FaultModeTest, SuccessCanHaveAText) {
    const WrittenResult merged = MergeWith({"fault=bstr-on-success"});
    EXPECT_EQ(merged.result, NoConflict);
    EXPECT_EQ(merged.error, L"There is nothing wrong.");
    EXPECT_EQ(Capabilities().error, L"There is nothing wrong.");
}

TEST_F(FaultModeTest, StrikesTheNthCallOfItsScopeAlone) {
    Use({"fault=merge-fail@2:page"});
    const std::string ticket = DefaultTicket();
    EXPECT_EQ(Merge(ticket, std::nullopt, kPTPageScope).result, NoConflict);
    EXPECT_EQ(Merge(ticket, std::nullopt, kPTJobScope).result, NoConflict);
    EXPECT_EQ(Merge(ticket, std::nullopt, kPTPageScope).result, E_FAIL);
    EXPECT_EQ(Merge(ticket, std::nullopt, kPTPageScope).result, NoConflict);
    m_provider.Reset();
    EXPECT_EQ(Merge(ticket, std::nullopt, kPTPageScope).result, NoConflict);
    EXPECT_EQ(Merge(ticket, std::nullopt, kPTPageScope).result, E_FAIL);
}

TEST_F(FaultModeTest, RefusedArgumentsDoNotCount) {
    Use({"fault=merge-fail@1"});
    const auto result = MemoryStream::Make();
    EXPECT_EQ(m_provider.MergeAndValidatePrintTicket(m_handle, nullptr, nullptr, kPTJobScope, result.Get(),
                                                     nullptr),
              E_INVALIDARG);
    EXPECT_EQ(Merge(DefaultTicket(), std::nullopt).result, E_FAIL);
}

}  // namespace
}  // namespace devkit::prntvpt
