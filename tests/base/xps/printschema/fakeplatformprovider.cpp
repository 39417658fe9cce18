#include "fakeplatformprovider.h"

#include <utility>

#include "importseam.h"
#include "platform/bstr.h"
#include "usertoken.h"

namespace tests {
namespace {

FakePlatformProvider* g_pCurrentProvider = nullptr;

[[nodiscard]] std::string ReadToEnd(IStream* pStream) {
    std::string bytes;
    char block[256];
    ULONG read = 0;
    while (SUCCEEDED(pStream->Read(block, sizeof(block), &read)) && read != 0) bytes.append(block, read);
    return bytes;
}

[[nodiscard]] std::string TrimmedEnd(std::string text) {
    text.erase(text.find_last_not_of("\r\n") + 1);
    return text;
}

void WINAPI TestSysFreeString(BSTR text) {
    static auto* const pOriginal = SystemFunction<decltype(SysFreeString)>(L"oleaut32.dll", "SysFreeString");
    FakePlatformProvider::TextIsFreed(text);
    pOriginal(text);
}

[[nodiscard]] HRESULT WriteAll(IStream* pStream, const std::string& bytes) {
    ULONG written = 0;
    return bytes.empty() ? S_OK : pStream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written);
}

}  // namespace

FakePlatformProvider::FakePlatformProvider(CallRecorder& calls)
    : merge([](const std::string& delta) { return delta; }), m_calls(calls) {
    g_pCurrentProvider = this;
}

FakePlatformProvider::~FakePlatformProvider() { g_pCurrentProvider = nullptr; }

FakePlatformProvider& FakePlatformProvider::Current() { return *g_pCurrentProvider; }

void FakePlatformProvider::TextIsFreed(BSTR text) {
    if (g_pCurrentProvider != nullptr) g_pCurrentProvider->errorTexts.erase(text);
}

HRESULT FakePlatformProvider::Enter(const std::string& call, HPTPROVIDER provider) {
    tokens.push_back(ThreadTokenId());
    if (GetCurrentThreadId() != m_thread) breaches.push_back("another thread");
    if (provider != nullptr && !openHandles.contains(provider))
        breaches.push_back("a handle that is not open");
    return m_calls.Enter(call);
}

HRESULT FakePlatformProvider::Answer(HRESULT hr, BSTR* pError) {
    if (pError == nullptr) return hr;
    if (*pError != nullptr) breaches.push_back("an error text that is not null");
    if (FAILED(hr) && !errorText.empty()) {
        *pError = platform::Bstr(errorText).Detach();
        errorTexts.insert(*pError);
    }
    return hr;
}

HRESULT FakePlatformProvider::Open(PCWSTR printer, DWORD version, HPTPROVIDER* pProvider) {
    const HRESULT hr = Enter("PTOpenProvider " + Narrow(printer) + " " + std::to_string(version), nullptr);
    if (FAILED(hr)) return hr;
    *pProvider = reinterpret_cast<HPTPROVIDER>(++m_lastHandle);
    openHandles.insert(*pProvider);
    return S_OK;
}

HRESULT FakePlatformProvider::Close(HPTPROVIDER provider) {
    const HRESULT hr = Enter("PTCloseProvider", provider);
    openHandles.erase(provider);
    return hr;
}

HRESULT FakePlatformProvider::Merge(HPTPROVIDER provider, IStream* pBase, IStream* pDelta,
                                    EPrintTicketScope scope, IStream* pResult, BSTR* pError) {
    const std::string base = TrimmedEnd(ReadToEnd(pBase));
    const std::string delta = TrimmedEnd(ReadToEnd(pDelta));
    const HRESULT hr =
        Enter("PTMergeAndValidatePrintTicket " + std::to_string(scope) + " " + base + " " + delta, provider);
    if (FAILED(hr)) return Answer(hr, pError);
    if (provider == nullptr) return Answer(E_INVALIDARG, pError);
    const HRESULT written = WriteAll(pResult, merge(delta));
    return Answer(FAILED(written) ? written : mergeResult, pError);
}

HRESULT FakePlatformProvider::GetCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities,
                                              BSTR* pError) {
    const HRESULT hr = Enter("PTGetPrintCapabilities " + TrimmedEnd(ReadToEnd(pTicket)), provider);
    if (FAILED(hr)) return Answer(hr, pError);
    return Answer(provider == nullptr ? E_INVALIDARG : WriteAll(pCapabilities, capabilities), pError);
}

}  // namespace tests

// The platform's names, defined here so that the linker does not look for them in the import library.
extern "C" {

HRESULT WINAPI PTOpenProvider(PCWSTR printer, DWORD version, HPTPROVIDER* pProvider) {
    return tests::FakePlatformProvider::Current().Open(printer, version, pProvider);
}

HRESULT WINAPI PTCloseProvider(HPTPROVIDER provider) {
    return tests::FakePlatformProvider::Current().Close(provider);
}

HRESULT WINAPI PTMergeAndValidatePrintTicket(HPTPROVIDER provider, IStream* pBase, IStream* pDelta,
                                             EPrintTicketScope scope, IStream* pResult, BSTR* pError) {
    return tests::FakePlatformProvider::Current().Merge(provider, pBase, pDelta, scope, pResult, pError);
}

HRESULT WINAPI PTGetPrintCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities,
                                      BSTR* pError) {
    return tests::FakePlatformProvider::Current().GetCapabilities(provider, pTicket, pCapabilities, pError);
}

}  // extern "C"

TEST_IMPORT(SysFreeString, 4, tests::TestSysFreeString)
