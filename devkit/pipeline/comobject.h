#pragma once

#include "platform/windows.h"

#include <type_traits>
#include <utility>

#include "devkit/pipeline/runcontext.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// The interface that an interface extends, where that is not IUnknown.
template <typename Interface>
struct Extended {
    using Type = IUnknown;
};
template <>
struct Extended<IFixedPage> {
    using Type = IPartBase;
};
template <>
struct Extended<IPartPrintTicket> {
    using Type = IPartBase;
};
template <>
struct Extended<IPartColorProfile> {
    using Type = IPartBase;
};
template <>
struct Extended<IPartResourceDictionary> {
    using Type = IPartBase;
};
template <>
struct Extended<IPartImage> {
    using Type = IPartBase;
};
template <>
struct Extended<IPartThumbnail> {
    using Type = IPartBase;
};
template <>
struct Extended<IPartFont> {
    using Type = IPartBase;
};
template <>
struct Extended<IPartFont2> {
    using Type = IPartFont;
};

// A COM object with reference counts starting at 1 that answers the interfaces given, those that they extend,
// and IUnknown. Made with MakeObject; its last Release destroys it.
template <typename First, typename... Others>
class ComObject : public First, public Others..., public LiveObject {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        if (ppObject == nullptr) return E_POINTER;
        *ppObject = Find(iid);
        if (*ppObject == nullptr) return E_NOINTERFACE;
        AddReference();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return AddReference(); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = DropReference();
        if (left == 0) delete this;
        return left;
    }

  protected:
    using LiveObject::LiveObject;
    virtual ~ComObject() = default;

  private:
    void* Find(REFIID iid) noexcept {
        if (IsEqualIID(iid, __uuidof(IUnknown))) return static_cast<First*>(this);
        void* found = Match<First, First>(iid);
        static_cast<void>((... || ((found == nullptr) && (found = Match<Others, Others>(iid)) != nullptr)));
        return found;
    }

    // The object as Own when iid is Candidate or an interface that Candidate extends.
    template <typename Own, typename Candidate>
    void* Match(REFIID iid) noexcept {
        if constexpr (std::is_same_v<Candidate, IUnknown>) {
            return nullptr;
        } else {
            if (IsEqualIID(iid, __uuidof(Candidate))) return static_cast<Own*>(this);
            return Match<Own, typename Extended<Candidate>::Type>(iid);
        }
    }
};

// A new object with the one reference that the owner holds.
template <typename Object, typename... Arguments>
[[nodiscard]] platform::ComPtr<Object> MakeObject(Arguments&&... arguments) {
    return platform::ComPtr<Object>::Adopt(new Object(std::forward<Arguments>(arguments)...));
}

}  // namespace devkit::pipeline
