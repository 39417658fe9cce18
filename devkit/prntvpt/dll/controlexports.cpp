#include <algorithm>
#include <cstring>
#include <string>

#include "devkit/prntvpt/control/control.h"
#include "devkit/prntvpt/dll/instance.h"

using devkit::prntvpt::Instance;

namespace {

void CopyText(const std::string& text, char* pTarget, SIZE_T cb) {
    if (pTarget == nullptr || cb == 0) return;
    const SIZE_T length = std::min<SIZE_T>(text.size(), cb - 1);
    std::memcpy(pTarget, text.data(), length);
    pTarget[length] = '\0';
}

// The protocol of the texts: the size that is needed, and the text where there is room for it.
[[nodiscard]] SIZE_T GiveText(const std::string& text, char* pTarget, SIZE_T cb) {
    if (text.empty()) return 0;
    if (cb > text.size()) CopyText(text, pTarget, cb);
    return text.size() + 1;
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

SIZE_T WINAPI SimReport(char* pReport, SIZE_T cb) { return GiveText(Instance().Report(), pReport, cb); }

SIZE_T WINAPI SimDefaultTicket(char* pTicket, SIZE_T cb) {
    return GiveText(Instance().DefaultTicket(), pTicket, cb);
}

void WINAPI SimReset() { Instance().Reset(); }

void WINAPI SimFinish() { Instance().Finish(); }
}
