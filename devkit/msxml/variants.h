#pragma once

#include "platform/windows.h"

#include <string>

#include "platform/variant.h"

namespace devkit::msxml {

// Puts a value into the target as one of another type, independent of the locale. Throws ComError with
// DISP_E_TYPEMISMATCH when it has no such form.
void Convert(const VARIANT& value, VARTYPE type, platform::Variant& target);

// Puts a copy of the value into the target, of what a VT_BYREF leads to. Throws ComError.
void CopyDirect(const VARIANT& value, platform::Variant& target);

// The text form of a value, by Convert.
[[nodiscard]] std::wstring TextOf(const VARIANT& value);

}  // namespace devkit::msxml
