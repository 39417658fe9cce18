#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <utility>

namespace platform {

// Owns one reference to a COM object. Microsoft::WRL::ComPtr is not used because MinGW's Attach adds a
// reference where Windows' takes over the caller's, so the same line would leak on one toolchain.
template <typename Interface>
class ComPtr {
  public:
    ComPtr() noexcept = default;
    ComPtr(std::nullptr_t) noexcept {}

    // Adds a reference of its own; the caller keeps the one it has.
    explicit ComPtr(Interface* object) noexcept : m_pObject(object) {
        if (m_pObject != nullptr) m_pObject->AddRef();
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_pObject) {}
    ComPtr(ComPtr&& other) noexcept : m_pObject(std::exchange(other.m_pObject, nullptr)) {}
    ~ComPtr() { Reset(); }

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_pObject, other.m_pObject);
        return *this;
    }

    // Takes over the caller's reference.
    [[nodiscard]] static ComPtr Adopt(Interface* object) noexcept {
        ComPtr owner;
        owner.m_pObject = object;
        return owner;
    }

    void Reset() noexcept {
        if (Interface* object = std::exchange(m_pObject, nullptr)) object->Release();
    }

    // Gives the reference to the caller, who releases it.
    [[nodiscard]] Interface* Detach() noexcept { return std::exchange(m_pObject, nullptr); }

    [[nodiscard]] Interface* Get() const noexcept { return m_pObject; }
    Interface* operator->() const noexcept { return m_pObject; }
    explicit operator bool() const noexcept { return m_pObject != nullptr; }

    // The address for an out-parameter. What was held is released first, and the slot is null when it is
    // handed out.
    [[nodiscard]] Interface** Put() noexcept {
        Reset();
        return &m_pObject;
    }
    [[nodiscard]] void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

    // QueryInterface into target, which is null after a failure. E_POINTER when nothing is held.
    template <typename Other>
    [[nodiscard]] HRESULT QueryTo(ComPtr<Other>& target) const noexcept {
        void** slot = target.PutVoid();
        return m_pObject == nullptr ? E_POINTER : m_pObject->QueryInterface(__uuidof(Other), slot);
    }

  private:
    Interface* m_pObject = nullptr;
};

}  // namespace platform
