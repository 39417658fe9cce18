#pragma once

#include "platform/windows.h"

#include <new>
#include <string_view>
#include <utility>

namespace platform {

// Owns a BSTR. A null BSTR and an empty one mean the same and both read as the empty view.
class Bstr {
  public:
    Bstr() noexcept = default;
    // std::bad_alloc when the text cannot be allocated.
    explicit Bstr(std::wstring_view text)
        : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
        if (m_text == nullptr) throw std::bad_alloc();
    }
    Bstr(const Bstr&) = delete;
    Bstr(Bstr&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
    ~Bstr() { SysFreeString(m_text); }

    Bstr& operator=(Bstr other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }

    // Takes over a BSTR that the caller owns.
    [[nodiscard]] static Bstr Adopt(BSTR text) noexcept {
        Bstr owner;
        owner.m_text = text;
        return owner;
    }

    [[nodiscard]] BSTR Get() const noexcept { return m_text; }
    // Gives the BSTR to the caller, who frees it.
    [[nodiscard]] BSTR Detach() noexcept { return std::exchange(m_text, nullptr); }
    [[nodiscard]] std::wstring_view View() const noexcept {
        return m_text == nullptr ? std::wstring_view() : std::wstring_view(m_text, SysStringLen(m_text));
    }
    [[nodiscard]] bool Empty() const noexcept { return SysStringLen(m_text) == 0; }

    // The address for an out-parameter. What was held is freed first.
    [[nodiscard]] BSTR* Put() noexcept {
        SysFreeString(std::exchange(m_text, nullptr));
        return &m_text;
    }

  private:
    BSTR m_text = nullptr;
};

}  // namespace platform
