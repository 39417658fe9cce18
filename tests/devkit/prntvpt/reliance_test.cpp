#include <thread>

#include "conformancetest.h"
#include "devkit/msxml/com/domdocument.h"
#include "devkit/msxml/com/domregistration.h"
#include "memorystream.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"
#include "tickets.h"

// What a filter relies on that keeps its tickets in DOM documents and hands the documents' own streams to the
// provider, with what its merging has put back into them.

namespace devkit::prntvpt {
namespace {

using namespace tests;
using platform::Bstr;
using platform::ComPtr;

using Document = ComPtr<IXMLDOMDocument2>;

// The system's document, or the kit's where the system's is no stream.
[[nodiscard]] Document MakeDocument() {
    Document document;
    const HRESULT hr = msxml::SystemDomConforms()
                           ? CoCreateInstance(platform::CLSID_DomDocument60, nullptr, CLSCTX_INPROC_SERVER,
                                              __uuidof(IXMLDOMDocument2), document.PutVoid())
                           : msxml::CreateDomDocument(__uuidof(IXMLDOMDocument2), document.PutVoid());
    EXPECT_EQ(S_OK, hr);
    EXPECT_EQ(S_OK, document->put_async(VARIANT_FALSE));
    return document;
}

[[nodiscard]] Document DocumentOf(std::string_view ticket) {
    Document document = MakeDocument();
    VARIANT_BOOL isLoaded = VARIANT_FALSE;
    EXPECT_EQ(S_OK, document->loadXML(Bstr(std::wstring(ticket.begin(), ticket.end())).Get(), &isLoaded));
    return document;
}

[[nodiscard]] ComPtr<IStream> StreamOf(const Document& document) {
    ComPtr<IStream> stream;
    EXPECT_EQ(S_OK, document->QueryInterface(__uuidof(IStream), stream.PutVoid()));
    return stream;
}

// Empty when the document has no element.
[[nodiscard]] std::wstring RootName(const Document& document) {
    ComPtr<IXMLDOMElement> root;
    if (document->get_documentElement(root.Put()) != S_OK) return {};
    Bstr name;
    EXPECT_EQ(S_OK, root->get_baseName(name.Put()));
    return std::wstring(name.View());
}

[[nodiscard]] std::string Option(std::string_view name, std::string_view content = {}) {
    return "<psf:Option name=\"" + std::string(name) + "\">" + std::string(content) + "</psf:Option>";
}

class RelianceTest : public PrinterConformanceTest {
  protected:
    void SetUp() override {
        ASSERT_HRESULT_SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        PrinterConformanceTest::SetUp();
    }
    void TearDown() override {
        PrinterConformanceTest::TearDown();
        CoUninitialize();
    }
    // Wine's provider knows tickets, and no capabilities.
    [[nodiscard]] bool WritesCapabilities() const {
        const auto ticket = MemoryStream::Make(Ticket(""));
        const auto capabilities = MemoryStream::Make();
        return WriteCapabilities(ticket.Get(), capabilities.Get(), nullptr) !=
               HRESULT_FROM_WIN32(ERROR_SXS_KEY_NOT_FOUND);
    }
};

TEST_P(RelianceTest, AFeatureWithTwoOptionsIsTakenAsABase) {
    const std::string base = Ticket("<psf:Feature name=\"psk:PageMediaSize\">" + Option("psk:ISOA4") +
                                    Option("psk:NorthAmericaLetter") + "</psf:Feature>");
    const WrittenResult merged = Merge(base, nullptr, kPTPageScope);
    EXPECT_HRESULT_SUCCEEDED(merged.result);
}

TEST_P(RelianceTest, AValueBesideAParameterReferenceIsTakenAsABase) {
    const std::string base = Ticket(
        "<psf:Feature name=\"psk:PageScaling\">" +
        Option("psk:CustomSquare",
               "<psf:ScoredProperty name=\"psk:Scale\"><psf:Value xsi:type=\"xsd:integer\">50</psf:Value>"
               "<psf:ParameterRef name=\"psk:PageScalingScale\"/></psf:ScoredProperty>") +
        "</psf:Feature>" + Parameter("psk:PageScalingScale", "50"));
    EXPECT_HRESULT_SUCCEEDED(Merge(base, nullptr, kPTPageScope).result);
}

// The Print Schema allows a name once, however it is spelled, so a provider may refuse it; then the filter's
// job fails with that code.
TEST_P(RelianceTest, OnePrivateNameUnderTwoPrefixesIsTakenOrABadBase) {
    std::string base = Ticket(Select("acme:PageStamp", "acme:On") + Select("same:PageStamp", "same:Off"));
    base.insert(base.find("xmlns:acme"), "xmlns:same=\"" + std::string(kAcmeUri) + "\" ");
    const HRESULT merged = Merge(base, nullptr, kPTPageScope).result;
    EXPECT_TRUE(SUCCEEDED(merged) || merged == kBadBase) << std::hex << merged;
}

TEST_P(RelianceTest, EveryPrefixOfTheResultIsDeclaredAtItsRoot) {
    const std::string delta = Ticket(Select("psk:PageOrientation", "psk:Landscape"));
    const std::string result = Merge(Ticket(""), delta.c_str(), kPTPageScope).bytes;
    const std::string root = result.substr(0, result.find('>', result.find("PrintTicket")));
    for (const std::string quote : {"name=\"", "type=\""}) {
        for (std::size_t at = result.find(quote); at != std::string::npos; at = result.find(quote, at + 1)) {
            const std::size_t start = at + quote.size();
            const std::string prefix = result.substr(start, result.find_first_of(":\"", start) - start);
            EXPECT_NE(std::string::npos, root.find("xmlns:" + prefix + "=")) << prefix;
        }
    }
}

TEST_P(RelianceTest, DocumentsStreamsAreBaseDeltaAndResult) {
    const Document base = DocumentOf(Ticket(Select("psk:PageOrientation", "psk:Portrait")));
    const Document delta = DocumentOf(Ticket(Select("psk:PageOrientation", "psk:Landscape")));
    const Document result = MakeDocument();
    EXPECT_HRESULT_SUCCEEDED(MergeStreams(m_handle, StreamOf(base).Get(), StreamOf(delta).Get(), kPTPageScope,
                                          StreamOf(result).Get(), nullptr));
    EXPECT_EQ(L"PrintTicket", RootName(result));
}

TEST_P(RelianceTest, ADocumentsStreamTakesTheCapabilities) {
    if (!WritesCapabilities()) GTEST_SKIP() << "this provider writes no capabilities";
    const Document ticket = DocumentOf(Ticket(""));
    const Document capabilities = MakeDocument();
    EXPECT_HRESULT_SUCCEEDED(
        WriteCapabilities(StreamOf(ticket).Get(), StreamOf(capabilities).Get(), nullptr));
    EXPECT_EQ(L"PrintCapabilities", RootName(capabilities));
}

TEST_P(RelianceTest, CapabilitiesAreWrittenWithoutATextOfAnError) {
    if (!WritesCapabilities()) GTEST_SKIP() << "this provider writes no capabilities";
    const auto ticket = MemoryStream::Make(Ticket(""));
    const auto capabilities = MemoryStream::Make();
    Bstr error;
    EXPECT_HRESULT_SUCCEEDED(WriteCapabilities(ticket.Get(), capabilities.Get(), error.Put()));
    EXPECT_EQ(nullptr, error.Get());
    EXPECT_EQ(capabilities->Bytes().size(), capabilities->Position());
    EXPECT_NE(std::string::npos, capabilities->Bytes().find("PrintCapabilities"));
}

TEST_P(RelianceTest, CapabilitiesForATicketThatIsNoneAreRefused) {
    const auto ticket = MemoryStream::Make("<a/>");
    const auto capabilities = MemoryStream::Make();
    EXPECT_HRESULT_FAILED(WriteCapabilities(ticket.Get(), capabilities.Get(), nullptr));
    EXPECT_EQ("", capabilities->Bytes());
}

TEST_P(RelianceTest, OpensMergesAndClosesUnderAnImpersonationToken) {
    ASSERT_TRUE(ImpersonateSelf(SecurityImpersonation));
    HPTPROVIDER handle = nullptr;
    const HRESULT opened = Open(m_printer.c_str(), 1, &handle);
    const auto base = MemoryStream::Make(Ticket(""));
    const auto result = MemoryStream::Make();
    const HRESULT merged =
        handle == nullptr ? opened
                          : MergeStreams(handle, base.Get(), nullptr, kPTJobScope, result.Get(), nullptr);
    const HRESULT closed = handle == nullptr ? opened : Close(handle);
    ASSERT_TRUE(RevertToSelf());
    EXPECT_EQ(S_OK, opened);
    EXPECT_HRESULT_SUCCEEDED(merged);
    EXPECT_EQ(S_OK, closed);
}

TEST_P(RelianceTest, AHandleIsClosedOnItsOwnThreadOnly) {
    HRESULT elsewhere = S_OK;
    std::thread([&] { elsewhere = Close(m_handle); }).join();
    EXPECT_HRESULT_FAILED(elsewhere);
    EXPECT_EQ(S_OK, Close(std::exchange(m_handle, nullptr)));
}

RUN_FOR_BOTH_PROVIDERS(RelianceTest);

}  // namespace
}  // namespace devkit::prntvpt
