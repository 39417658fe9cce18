#include <algorithm>
#include <cstring>
#include <string>

#include "devkit/prntvpt/control/control.h"
#include "devkit/prntvpt/dll/instance.h"

using devkit::prntvpt::Instance;
using devkit::prntvpt::ProviderCall;
using devkit::prntvpt::WriteMessage;

namespace {

void CopyText(const std::string& text, char* pTarget, SIZE_T cb) {
    if (pTarget == nullptr || cb == 0) return;
    const SIZE_T length = std::min<SIZE_T>(text.size(), cb - 1);
    std::memcpy(pTarget, text.data(), length);
    pTarget[length] = '\0';
}

// The protocol of the texts: the size that is needed, and the text where there is room for it. There is none
// when memory is short.
template <typename MakeText>
[[nodiscard]] SIZE_T GiveText(const MakeText& makeText, char* pTarget, SIZE_T cb) {
    try {
        const std::string text = makeText();
        if (text.empty()) return 0;
        if (cb > text.size()) CopyText(text, pTarget, cb);
        return text.size() + 1;
    } catch (...) {
        return 0;
    }
}

}  // namespace

extern "C" {

HRESULT WINAPI SimConfigure(const char* pConfiguration, char* pError, SIZE_T cbError) {
    std::string error;
    const HRESULT hr = Instance().Configure(pConfiguration, error);
    CopyText(error, pError, cbError);
    return hr;
}

HRESULT WINAPI SimExpectToken(HANDLE token) { return Instance().ExpectToken(token); }

void WINAPI SimListen(SimListener* pListener, void* pContext) {
    if (pListener == nullptr) return Instance().Listen(nullptr);
    Instance().Listen([=](const ProviderCall& call) { pListener(pContext, WriteMessage(call).c_str()); });
}

SIZE_T WINAPI SimReport(char* pReport, SIZE_T cb) {
    return GiveText([] { return WriteMessage(Instance().Report()); }, pReport, cb);
}

SIZE_T WINAPI SimDefaultTicket(char* pTicket, SIZE_T cb) {
    return GiveText([] { return Instance().DefaultTicket(); }, pTicket, cb);
}

void WINAPI SimReset() { Instance().Reset(); }

void WINAPI SimFinish() { Instance().Finish(); }
}
