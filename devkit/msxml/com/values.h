#pragma once

#include "platform/windows.h"

#include <string>
#include <string_view>

#include "platform/variant.h"

namespace devkit::msxml {

// A null BSTR reads as the empty text.
[[nodiscard]] inline std::wstring_view View(BSTR text) noexcept {
    return text == nullptr ? std::wstring_view() : std::wstring_view(text, SysStringLen(text));
}

// A name or a document in a BSTR, which ends at its first null character.
[[nodiscard]] inline std::wstring_view ViewToNull(BSTR text) noexcept {
    return View(text).substr(0, View(text).find(L'\0'));
}

// Give text to the caller of a COM method, who frees it. E_INVALIDARG for a null out-parameter,
// E_OUTOFMEMORY.
[[nodiscard]] HRESULT ReturnText(std::wstring_view text, BSTR* pOut) noexcept;
[[nodiscard]] HRESULT ReturnText(std::wstring_view text, VARIANT* pOut) noexcept;
// Report that there is no text: S_FALSE with a null BSTR or VT_NULL. E_INVALIDARG for a null out-parameter.
[[nodiscard]] HRESULT ReturnNoText(BSTR* pOut) noexcept;
[[nodiscard]] HRESULT ReturnNoText(VARIANT* pOut) noexcept;
// S_FALSE with null for the empty text.
[[nodiscard]] HRESULT ReturnTextIfAny(std::wstring_view text, BSTR* pOut) noexcept;

// Return a number or a flag. E_INVALIDARG for a null out-parameter.
[[nodiscard]] HRESULT ReturnNumber(long number, long* pOut) noexcept;
[[nodiscard]] HRESULT ReturnFlag(bool flag, VARIANT_BOOL* pOut) noexcept;

// Puts a value into the target as one of another type, independent of the locale. Throws common::HresultError
// with DISP_E_TYPEMISMATCH when it has no such form.
void Convert(const VARIANT& value, VARTYPE type, platform::Variant& target);

// Puts a copy of the value into the target, of what a VT_BYREF leads to. Throws common::HresultError:
// E_INVALIDARG for one that leads nowhere.
void CopyDirect(const VARIANT& value, platform::Variant& target);

// The text form of a value, by Convert.
[[nodiscard]] std::wstring TextOf(const VARIANT& value);

}  // namespace devkit::msxml
