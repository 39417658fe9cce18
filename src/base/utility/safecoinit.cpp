#include "base/utility/safecoinit.h"

#include "platform/windows.h"

#include "base/logging/check.h"

namespace base::utility {

SafeCoInit::SafeCoInit() {
    const HRESULT hr = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (hr != RPC_E_CHANGED_MODE) logging::ThrowIfFailed(hr);
    m_entered = SUCCEEDED(hr);
}

SafeCoInit::~SafeCoInit() {
    if (m_entered) CoUninitialize();
}

}  // namespace base::utility
