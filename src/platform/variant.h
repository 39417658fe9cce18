#pragma once

#include "platform/windows.h"

#include <string_view>

#include "platform/bstr.h"

namespace platform {

// Owns a VARIANT. VariantClear refuses a bare VT_BYREF (DISP_E_BADVARTYPE), which is how the pipeline hands
// out borrowed handles; such a variant owns nothing, so its failing clear is no failure.
class Variant {
  public:
    Variant() noexcept { VariantInit(&m_value); }
    // std::bad_alloc when the text cannot be allocated.
    explicit Variant(std::wstring_view text) : Variant() {
        m_value.bstrVal = Bstr(text).Detach();
        m_value.vt = VT_BSTR;
    }
    // Adds a reference of its own.
    explicit Variant(IUnknown* object) noexcept : Variant() {
        m_value.vt = VT_UNKNOWN;
        m_value.punkVal = object;
        if (object != nullptr) object->AddRef();
    }
    explicit Variant(LONG number) noexcept : Variant() {
        m_value.vt = VT_I4;
        m_value.lVal = number;
    }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;
    ~Variant() { Clear(); }

    [[nodiscard]] const VARIANT& Get() const noexcept { return m_value; }
    [[nodiscard]] VARTYPE Type() const noexcept { return m_value.vt; }
    // The object of a VT_UNKNOWN or VT_DISPATCH value, borrowed; null for any other type.
    [[nodiscard]] IUnknown* Unknown() const noexcept {
        return m_value.vt == VT_UNKNOWN || m_value.vt == VT_DISPATCH ? m_value.punkVal : nullptr;
    }
    // The text of a VT_BSTR value, borrowed; null for any other type.
    [[nodiscard]] BSTR Text() const noexcept { return m_value.vt == VT_BSTR ? m_value.bstrVal : nullptr; }
    // The handle that a bare VT_BYREF value carries in byref, borrowed; null for any other type.
    [[nodiscard]] HANDLE Handle() const noexcept { return m_value.vt == VT_BYREF ? m_value.byref : nullptr; }

    // The address for an out-parameter. What was held is cleared first.
    [[nodiscard]] VARIANT* Put() noexcept {
        Clear();
        return &m_value;
    }

  private:
    void Clear() noexcept {
        VariantClear(&m_value);
        VariantInit(&m_value);
    }

    VARIANT m_value;
};

}  // namespace platform
