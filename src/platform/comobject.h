#pragma once

#include "platform/windows.h"

#include <atomic>
#include <type_traits>
#include <utility>

#include "platform/comptr.h"
#include "platform/guid.h"

namespace platform {

// The reference count of a COM object, which starts at the one reference of its maker. Any thread may count.
class ReferenceCount {
  public:
    ReferenceCount() noexcept = default;
    ReferenceCount(const ReferenceCount&) = delete;
    ReferenceCount& operator=(const ReferenceCount&) = delete;

    [[nodiscard]] ULONG References() const noexcept { return m_references; }

  protected:
    ~ReferenceCount() = default;

    ULONG AddReference() noexcept { return ++m_references; }
    [[nodiscard]] ULONG DropReference() noexcept { return --m_references; }

  private:
    std::atomic<ULONG> m_references = 1;
};

// The identity of a COM object: one IUnknown, the interfaces listed, those that they extend, and a count of
// references whose last Release destroys the object. Count is ReferenceCount or derives from it; what else it
// does in its constructor and destructor (an entry among the living, say) holds for as long as the object
// lives, its members included. The virtual destructor stands behind the interfaces in the vtable.
template <typename Count, typename First, typename... Others>
class ComIdentity : public First, public Others..., public Count {
  public:
    // E_POINTER without a place for the answer; null and E_NOINTERFACE for any other interface.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = Find(iid);
        if (*ppObject == nullptr) return E_NOINTERFACE;
        this->AddReference();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return this->AddReference(); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = this->DropReference();
        if (left == 0) delete this;
        return left;
    }

  protected:
    using Count::Count;
    virtual ~ComIdentity() = default;

  private:
    void* Find(REFIID iid) noexcept {
        if (iid == __uuidof(IUnknown)) return static_cast<First*>(this);
        void* found = Match<First, First>(iid);
        (static_cast<void>(found != nullptr || (found = Match<Others, Others>(iid)) != nullptr), ...);
        return found;
    }

    // The object as Own when the identifier is Candidate's or that of an interface that Candidate extends.
    template <typename Own, typename Candidate>
    void* Match(REFIID iid) noexcept {
        if constexpr (std::is_same_v<Candidate, IUnknown>) {
            return nullptr;
        } else {
            if (iid == __uuidof(Candidate)) return static_cast<Own*>(this);
            return Match<Own, typename Extended<Candidate>::Type>(iid);
        }
    }
};

// A new object with the one reference that the owner holds.
template <typename Object, typename... Arguments>
[[nodiscard]] ComPtr<Object> MakeObject(Arguments&&... arguments) {
    return ComPtr<Object>::Adopt(new Object(std::forward<Arguments>(arguments)...));
}

}  // namespace platform
