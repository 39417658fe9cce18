#pragma once

#include "platform/windows.h"

#include <string_view>

namespace devkit::msxml {

// A null BSTR reads as the empty text.
[[nodiscard]] inline std::wstring_view View(BSTR text) noexcept {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text, SysStringLen(text));
}

// Give text to the caller of a COM method, who frees it. E_INVALIDARG for a null out-parameter,
// E_OUTOFMEMORY.
[[nodiscard]] HRESULT ReturnText(std::wstring_view text, BSTR* pOut) noexcept;
[[nodiscard]] HRESULT ReturnText(std::wstring_view text, VARIANT* pOut) noexcept;

// Report that there is no text: S_FALSE with a null BSTR or VT_NULL. E_INVALIDARG for a null out-parameter.
[[nodiscard]] HRESULT ReturnNoText(BSTR* pOut) noexcept;
[[nodiscard]] HRESULT ReturnNoText(VARIANT* pOut) noexcept;

}  // namespace devkit::msxml
