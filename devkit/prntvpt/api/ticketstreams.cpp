#include "devkit/prntvpt/api/ticketstreams.h"

#include <algorithm>
#include <array>

#include "platform/utf.h"

namespace devkit::prntvpt {
namespace {

[[nodiscard]] std::string FromUtf16(std::string_view bytes, bool bigEndian) {
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t index = 0; index + 1 < bytes.size(); index += 2) {
        const auto first = static_cast<unsigned char>(bytes[index]);
        const auto second = static_cast<unsigned char>(bytes[index + 1]);
        text.push_back(static_cast<wchar_t>(bigEndian ? (first << 8U) | second : (second << 8U) | first));
    }
    if (text.starts_with(L'\uFEFF')) text.erase(0, 1);
    return platform::ToUtf8(text);
}

}  // namespace

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
    constexpr std::size_t kMaxBlock = 1U << 30;
    while (!bytes.empty()) {
        ULONG written = 0;
        const HRESULT hr = pStream->Write(
            bytes.data(), static_cast<ULONG>(std::min<std::size_t>(bytes.size(), kMaxBlock)), &written);
        if (FAILED(hr)) return hr;
        if (written == 0 || written > bytes.size()) return STG_E_MEDIUMFULL;
        bytes.remove_prefix(written);
    }
    return S_OK;
}

std::string DocumentText(std::string_view bytes) {
    if (bytes.starts_with("\xEF\xBB\xBF")) return std::string(bytes.substr(3));
    const bool pair = bytes.size() >= 2;
    if (bytes.starts_with("\xFF\xFE") || (pair && bytes[0] != '\0' && bytes[1] == '\0')) {
        return FromUtf16(bytes, false);
    }
    if (bytes.starts_with("\xFE\xFF") || (pair && bytes[0] == '\0' && bytes[1] != '\0')) {
        return FromUtf16(bytes, true);
    }
    return std::string(bytes);
}

}  // namespace devkit::prntvpt
