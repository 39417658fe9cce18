// The settings of tickets as the simulated print ticket provider gives them, which may write them in many
// ways.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "base/xml/xmlutility.h"
#include "devkit/prntvpt/client/simulatedprovider.h"
#include "handlertest.h"
#include "importseam.h"
#include "platform/prntvpt.h"
#include "platform/variant.h"
#include "programfolder.h"
#include "settingstext.h"
#include "ticketmarkup.h"

namespace {

using base::xml::LoadDom;
using base::xps::printschema::SetPrivatePrefix;
using devkit::prntvpt::SimulatedProvider;
using platform::ComPtr;
using platform::Variant;
using tests::Bytes;
using tests::Dom;
using tests::Feature;
using tests::HandlerTest;
using tests::Integer;
using tests::ScoredProperty;
using tests::SettingsText;
using tests::Ticket;

using Lines = std::vector<std::string>;
using Switches = std::vector<std::string>;

constexpr EPrintTicketScope kPlatformScopes[] = {kPTPageScope, kPTDocumentScope, kPTJobScope};
constexpr const char* kModels[] = {"simprinter", "simprinter-us", "asymmetric", "longedge", "shortedge"};

[[nodiscard]] SimulatedProvider& Simulated() {
    static SimulatedProvider provider(tests::ProgramFolder() / "simulated" / "prntvpt.dll");
    return provider;
}

template <typename Function>
[[nodiscard]] Function* Exported(const char* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(Simulated().Module(), name)));
}

[[nodiscard]] ComPtr<IStream> StreamOf(const std::string& bytes) {
    ComPtr<IStream> pStream;
    EXPECT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, pStream.Put()));
    EXPECT_EQ(S_OK, pStream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
    EXPECT_EQ(S_OK, pStream->Seek({}, STREAM_SEEK_SET, nullptr));
    return pStream;
}

[[nodiscard]] Dom Load(IStream* pStream) {
    EXPECT_EQ(S_OK, pStream->Seek({}, STREAM_SEEK_SET, nullptr));
    return LoadDom(Variant(static_cast<IUnknown*>(pStream)).Get());
}

class SimulatedTicketsTest : public HandlerTest {
  protected:
    void Configure(const std::string& model, const Switches& switches) {
        devkit::prntvpt::ProviderSettings settings;
        settings.device = std::filesystem::path(SOURCE_FOLDER) / "devkit" / "devices" / model;
        settings.printers = {"Printer"};
        settings.switches = switches;
        Simulated().Configure(settings);
    }

    Lines DefaultSettings() { return SettingsText(Load(StreamOf(Simulated().DefaultTicket()).Get()).Get()); }

    // The settings of the default ticket merged with the delta.
    Lines MergedSettings(const std::string& delta, EPrintTicketScope scope) {
        HPTPROVIDER handle = nullptr;
        EXPECT_EQ(S_OK, Exported<decltype(PTOpenProvider)>("PTOpenProvider")(L"Printer", 1, &handle));
        const ComPtr<IStream> pBase = StreamOf(Simulated().DefaultTicket());
        const ComPtr<IStream> pDelta = StreamOf(delta);
        const ComPtr<IStream> pResult = StreamOf({});
        platform::Bstr error;
        const HRESULT merged =
            Exported<decltype(PTMergeAndValidatePrintTicket)>("PTMergeAndValidatePrintTicket")(
                handle, pBase.Get(), pDelta.Get(), scope, pResult.Get(), error.Put());
        EXPECT_EQ(S_OK, Exported<decltype(PTCloseProvider)>("PTCloseProvider")(handle));
        EXPECT_TRUE(SUCCEEDED(merged)) << std::hex << merged;
        return SUCCEEDED(merged) ? SettingsText(Load(pResult.Get()).Get()) : Lines{"refused"};
    }
};

// What the device of every model has, with values that differ from its default ticket's.
std::string Delta() {
    const auto parameter = [](std::wstring_view name, int value) {
        return tests::ParameterInit(L"psk:PageScaling" + std::wstring(name), value);
    };
    const auto property = [](std::wstring_view name) {
        return ScoredProperty(L"psk:" + std::wstring(name),
                              tests::ParameterRef(L"psk:PageScaling" + std::wstring(name)));
    };
    return Bytes(Ticket(Feature(L"psk:PageOrientation", L"psk:Landscape") +
                        Feature(L"psk:JobInputBin", L"psk:Manual") +
                        Feature(L"psk:PageMediaSize", L"psk:ISOA5") +
                        Feature(L"psk:PageScaling", L"psk:Custom",
                                property(L"OffsetWidth") + property(L"OffsetHeight") +
                                    property(L"ScaleWidth") + property(L"ScaleHeight")) +
                        parameter(L"OffsetWidth", 1000) + parameter(L"OffsetHeight", 2000) +
                        parameter(L"ScaleWidth", 50) + parameter(L"ScaleHeight", 60)));
}

TEST_P(SimulatedTicketsTest, DefaultTicketsStateTheSettingsOfTheirDevice) {
    const std::string rest = "scaling PageScaling None 0 0 0 0";
    const std::string portrait = "orientation PageOrientation Portrait";
    const std::string unlimited = "printable JobPrintableMediaSize PrintableMediaSize 0 0 0 0";
    const std::string a4 = "media PageMediaSize ISOA4 210000 297000";
    const std::string letter = "media PageMediaSize NorthAmericaLetter 215900 279400";
    Configure("simprinter", {});
    EXPECT_EQ((Lines{rest, "bin JobInputBin AutoSelect ShortEdgeFirst", a4, portrait, unlimited}),
              DefaultSettings());
    Configure("simprinter-us", {});
    EXPECT_EQ((Lines{rest, "bin JobInputBin AutoSelect ShortEdgeFirst", letter, portrait, unlimited}),
              DefaultSettings());
    Configure("longedge", {});
    EXPECT_EQ((Lines{rest, "bin JobInputBin Cassette LongEdgeFirst", a4, portrait, unlimited}),
              DefaultSettings());
    Configure("shortedge", {});
    EXPECT_EQ((Lines{rest, "bin JobInputBin AutoSelect ShortEdgeFirst", a4, portrait, unlimited}),
              DefaultSettings());
}

TEST_P(SimulatedTicketsTest, AMergedTicketStatesTheSettingsOfItsScope) {
    Configure("simprinter", {});
    EXPECT_EQ((Lines{"scaling PageScaling Custom 1000 2000 50 60", "bin JobInputBin Manual ShortEdgeFirst",
                     "media PageMediaSize ISOA5 148000 210000", "orientation PageOrientation Landscape",
                     "printable JobPrintableMediaSize PrintableMediaSize 0 0 0 0"}),
              MergedSettings(Delta(), kPTJobScope));
    EXPECT_EQ("bin JobInputBin AutoSelect ShortEdgeFirst", MergedSettings(Delta(), kPTPageScope)[1]);
}

TEST_P(SimulatedTicketsTest, HowATicketIsWrittenDoesNotChangeItsSettings) {
    const Switches ways = {"prefixes=mangled",  "prefixes=collide",   "order=input",
                           "order=reversed",    "encoding=utf8-bom",  "encoding=utf16le",
                           "whitespace=pretty", "whitespace=comments"};
    for (const char* const model : kModels) {
        Configure(model, {});
        const Lines defaults = DefaultSettings();
        std::vector<Lines> merged;
        for (const EPrintTicketScope scope : kPlatformScopes)
            merged.push_back(MergedSettings(Delta(), scope));
        for (const std::string& way : ways) {
            SCOPED_TRACE(model + (" " + way));
            Configure(model, {way});
            EXPECT_EQ(defaults, DefaultSettings());
            for (std::size_t index = 0; index < merged.size(); ++index)
                EXPECT_EQ(merged[index], MergedSettings(Delta(), kPlatformScopes[index]));
        }
        SCOPED_TRACE(model);
        Configure(model, {"prefixes=mangled", "order=reversed", "encoding=utf16le", "whitespace=comments"});
        EXPECT_EQ(merged[2], MergedSettings(Delta(), kPTJobScope));
    }
}

TEST_P(SimulatedTicketsTest, TheFrameworkAsTheDefaultNamespaceIsRefused) {
    Configure("simprinter", {"prefixes=default-ns"});
    EXPECT_EQ((Lines{"scaling error 0x80004005", "bin error 0x80004005", "media error 0x80004005",
                     "orientation error 0x80004005", "printable error 0x80004005"}),
              DefaultSettings());
}

TEST_P(SimulatedTicketsTest, KeywordsDeclaredBelowTheRootAreUnexpected) {
    Configure("simprinter", {"prefixes=local"});
    EXPECT_EQ((Lines{"scaling error 0x8000FFFF", "bin error 0x8000FFFF", "media error 0x8000FFFF",
                     "orientation error 0x8000FFFF", "printable error 0x8000FFFF"}),
              DefaultSettings());
}

TEST_P(SimulatedTicketsTest, ADevicesOwnTrayIsReadAsTheKeywordOfItsNameUnderThePrefixOfLastResortAlone) {
    const std::string delta =
        Bytes(Ticket(Feature(L"psk:JobInputBin", L"own:Tray2"),
                     L" xmlns:own=\"http://schemas.example.com/printing/simdevice/v1\""));
    Configure("simprinter", {});
    EXPECT_EQ("bin JobInputBin Tray2 LongEdgeFirst", MergedSettings(delta, kPTJobScope)[1]);
    Configure("simprinter", {"prefixes=mangled"});
    EXPECT_EQ("bin JobInputBin AutoSelect ShortEdgeFirst", MergedSettings(delta, kPTJobScope)[1]);
}

TEST_P(SimulatedTicketsTest, ThePrintableMediaSizeIsFoundUnderThePrefixThatTheFilterIsToldAlone) {
    std::wstring bounds;
    int length = 100000;
    for (const wchar_t* name : {L"krk:MinWidth", L"krk:MinHeight", L"krk:MaxWidth", L"krk:MaxHeight"})
        bounds += tests::Named(L"Property", name, Integer(length++));
    const std::string delta =
        Bytes(Ticket(Feature(L"krk:PagePrintableMediaSize", L"krk:PrintableMediaSize", bounds),
                     L" xmlns:krk=\"urn:printable\""));
    Configure("simprinter", {"private=all", "option-props=keep-perfect"});
    EXPECT_EQ("printable JobPrintableMediaSize PrintableMediaSize 0 0 0 0",
              MergedSettings(delta, kPTPageScope)[4]);
    SetPrivatePrefix(L"ns0001");
    EXPECT_EQ("printable PagePrintableMediaSize PrintableMediaSize 100000 100001 100002 100003",
              MergedSettings(delta, kPTPageScope)[4]);
}

TEST_ON_EACH_DOM(SimulatedTicketsTest);

}  // namespace
