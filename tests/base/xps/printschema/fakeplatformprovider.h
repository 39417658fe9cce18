#pragma once

#include "platform/windows.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "callrecorder.h"
#include "platform/prntvpt.h"

namespace tests {

// Stands in for the platform's print ticket provider in this test program, which defines the provider's
// functions itself instead of importing them. Calls are noted as "PTOpenProvider NAME VERSION",
// "PTCloseProvider", "PTMergeAndValidatePrintTicket SCOPE BASE DELTA" and "PTGetPrintCapabilities TICKET",
// with the tickets' text. What the platform demands is checked: handles that are open and of this thread, and
// an error text that is null on entry and freed by the caller. A null handle is E_INVALIDARG, a merge that
// succeeds S_PT_NO_CONFLICT, as they are on the platform.
class FakePlatformProvider {
  public:
    explicit FakePlatformProvider(CallRecorder& calls);
    FakePlatformProvider(const FakePlatformProvider&) = delete;
    FakePlatformProvider& operator=(const FakePlatformProvider&) = delete;
    ~FakePlatformProvider();

    // The one that is alive; every call goes to it.
    [[nodiscard]] static FakePlatformProvider& Current();
    // To be told of every text that the program frees.
    static void TextIsFreed(BSTR text);

    HRESULT Open(PCWSTR printer, DWORD version, HPTPROVIDER* pProvider);
    HRESULT Close(HPTPROVIDER provider);
    HRESULT Merge(HPTPROVIDER provider, IStream* pBase, IStream* pDelta, EPrintTicketScope scope,
                  IStream* pResult, BSTR* pError);
    HRESULT GetCapabilities(HPTPROVIDER provider, IStream* pTicket, IStream* pCapabilities, BSTR* pError);

    // Makes a merge's result of the delta; the delta itself by default.
    std::function<std::string(const std::string& delta)> merge;
    HRESULT mergeResult = static_cast<HRESULT>(S_PT_NO_CONFLICT);
    std::string capabilities;
    // Handed out with every failure unless it is empty.
    std::wstring errorText;

    std::vector<std::string> breaches;
    std::set<HPTPROVIDER> openHandles;
    // The texts that were handed out and are not freed yet.
    std::set<BSTR> errorTexts;
    // The token of every call since the last one was forgotten, none for a call without one.
    std::vector<std::optional<LUID>> tokens;

  private:
    [[nodiscard]] HRESULT Enter(const std::string& call, HPTPROVIDER provider);
    [[nodiscard]] HRESULT Answer(HRESULT hr, BSTR* pError);

    CallRecorder& m_calls;
    DWORD m_thread = GetCurrentThreadId();
    ULONG_PTR m_lastHandle = 0x1000;
};

}  // namespace tests
