#include "devkit/prntvpt/api/streams.h"

#include <algorithm>
#include <array>

namespace devkit::prntvpt {

HRESULT ReadToEnd(IStream* pStream, std::size_t limit, std::string& bytes) {
    std::array<char, 16384> block;
    for (;;) {
        ULONG read = 0;
        const HRESULT hr = pStream->Read(block.data(), static_cast<ULONG>(block.size()), &read);
        if (FAILED(hr)) return hr;
        if (read == 0) return S_OK;
        bytes.append(block.data(), read);
        // S_FALSE says that there is no more.
        if (hr == S_FALSE || bytes.size() > limit) return S_OK;
    }
}

HRESULT WriteAll(IStream* pStream, std::string_view bytes) {
    constexpr std::size_t MaxBlock = 1U << 30;
    while (!bytes.empty()) {
        ULONG written = 0;
        const HRESULT hr = pStream->Write(
            bytes.data(), static_cast<ULONG>(std::min<std::size_t>(bytes.size(), MaxBlock)), &written);
        if (FAILED(hr)) return hr;
        if (written == 0 || written > bytes.size()) return STG_E_MEDIUMFULL;
        bytes.remove_prefix(written);
    }
    return S_OK;
}

}  // namespace devkit::prntvpt
