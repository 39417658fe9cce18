#pragma once

#include "platform/windows.h"

#include <atomic>
#include <type_traits>
#include <utility>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace tests {

// How many mock objects live in the process; the leak check of the test program compares it before and after
// each test.
inline std::atomic<int> g_liveMocks = 0;

// The identity of a mock COM object that answers IUnknown and the listed interfaces, IPartBase included for
// the parts that derive from it. Made with one reference.
template <typename First, typename... Others>
class MockObject : public First, public Others... {
  public:
    MockObject() { ++g_liveMocks; }
    MockObject(const MockObject&) = delete;
    MockObject& operator=(const MockObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = nullptr;
        if (iid == __uuidof(IUnknown)) *ppObject = static_cast<First*>(this);
        Answer<First>(iid, ppObject);
        (Answer<Others>(iid, ppObject), ...);
        if (*ppObject == nullptr) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG references = --m_references;
        if (references == 0) delete this;
        return references;
    }

    // What a test checks to be back at its own count.
    [[nodiscard]] ULONG References() const noexcept { return m_references; }

  protected:
    virtual ~MockObject() { --g_liveMocks; }

  private:
    template <typename Interface>
    void Answer(REFIID iid, void** ppObject) {
        if (iid == __uuidof(Interface)) *ppObject = static_cast<Interface*>(this);
        if constexpr (std::is_base_of_v<IPartBase, Interface>) {
            if (iid == __uuidof(IPartBase))
                *ppObject = static_cast<IPartBase*>(static_cast<Interface*>(this));
        }
    }

    std::atomic<ULONG> m_references = 1;
};

// An object without any interface of its own.
class MockUnknown : public MockObject<IUnknown> {};

template <typename Mock, typename... Arguments>
[[nodiscard]] platform::ComPtr<Mock> MakeMock(Arguments&&... arguments) {
    return platform::ComPtr<Mock>::Adopt(new Mock(std::forward<Arguments>(arguments)...));
}

}  // namespace tests
