#pragma once

#include "platform/windows.h"

#include <utility>

#include "devkit/pipeline/part.h"
#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"
#include "platform/guid.h"

namespace devkit::pipeline {

// The kit's own way from a COM object that a filter hands back to the part that it shows.
struct PLATFORM_UUID("6d6f9a4e-8f5b-4c1e-9a57-2d0b7f3c61e8") IKitPart : public IUnknown {
    [[nodiscard]] virtual const PartPtr& GetPart() const noexcept = 0;
};

}  // namespace devkit::pipeline

PLATFORM_INTERFACE_UUID(devkit::pipeline::IKitPart, 0x6d6f9a4e, 0x8f5b, 0x4c1e, 0x9a, 0x57, 0x2d, 0x0b, 0x7f,
                        0x3c, 0x61, 0xe8)

namespace devkit::pipeline {

// The object's identity, with the reference of its maker.
template <typename Object>
[[nodiscard]] platform::ComPtr<IUnknown> MakeIdentity(const ContextPtr& context, const PartPtr& part) {
    platform::ComPtr<IUnknown> identity;
    static_cast<void>(MakeObject<Object>(context, part).QueryTo(identity));
    return identity;
}

// The part that a COM object shows; null for null and for an object that is not the kit's.
[[nodiscard]] PartPtr PartOf(IUnknown* pObject) noexcept;

// What every object of a part has.
template <typename... Interfaces>
class PartObject : public ComObject<Interfaces..., IKitPart> {
  public:
    PartObject(ContextPtr context, PartPtr part)
        : ComObject<Interfaces..., IKitPart>(std::move(context), part->Title()), m_part(std::move(part)) {}

    // Which part it shows is the kit's own question, and never refused.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override {
        using Shown = ComObject<Interfaces..., IKitPart>;
        if (iid != __uuidof(IKitPart)) return Shown::QueryInterface(iid, ppObject);
        return Shown::Identity::QueryInterface(iid, ppObject);  // NOLINT(bugprone-parent-virtual-call)
    }
    const PartPtr& GetPart() const noexcept override { return m_part; }

  protected:
    // Runs the body of a method: notes the call with the part's name, gives the failure that a test has
    // planned for it, and turns what the body throws into a code.
    template <typename Body>
    HRESULT Call(const char* method, Body&& body) {
        return this->Answer([&]() -> HRESULT {
            const HRESULT planned = this->Context().Calls().Enter(method, m_part->Name());
            return FAILED(planned) ? planned : body();
        });
    }

    // Whether the part may still be changed; the failure otherwise, with the breach recorded.
    HRESULT CheckNotSent(const char* method) {
        return m_part->sent ? this->Context().Breach(Check::ChangedAfterSend,
                                                     std::string(method) + " changes " + m_part->Title() +
                                                         ", which was already sent")
                            : S_OK;
    }

    const PartPtr m_part;
};

// The parts of PartObject's users that are not templates.
HRESULT GetUriOf(const Part& part, BSTR* pUri);
HRESULT GetStreamOf(const ContextPtr& context, Part& part, IPrintReadStream** ppStream);
// The content type as a BSTR.
HRESULT GetContentTypeOf(const Part& part, BSTR* pContentType);

// IPartBase, for the interfaces that extend it.
template <typename Interface>
class StreamPartObject : public PartObject<Interface> {
  public:
    using PartObject<Interface>::PartObject;

    HRESULT STDMETHODCALLTYPE GetUri(BSTR* pUri) override {
        return this->Call("IPartBase::GetUri", [&] { return GetUriOf(*this->m_part, pUri); });
    }
    HRESULT STDMETHODCALLTYPE GetStream(IPrintReadStream** ppStream) override {
        if (ppStream != nullptr) *ppStream = nullptr;
        return this->Call("IPartBase::GetStream",
                          [&] { return GetStreamOf(this->SharedContext(), *this->m_part, ppStream); });
    }
    HRESULT STDMETHODCALLTYPE GetPartCompression(EXpsCompressionOptions* pCompression) override {
        return this->Call("IPartBase::GetPartCompression", [&]() -> HRESULT {
            if (pCompression == nullptr) return E_POINTER;
            *pCompression = this->m_part->compression;
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE SetPartCompression(EXpsCompressionOptions compression) override {
        return this->Call("IPartBase::SetPartCompression", [&]() -> HRESULT {
            if (const HRESULT hr = this->CheckNotSent("SetPartCompression"); FAILED(hr)) return hr;
            if (compression < Compression_NotCompressed || compression > Compression_Fast)
                return E_INVALIDARG;
            this->m_part->compression = compression;
            return S_OK;
        });
    }
};

}  // namespace devkit::pipeline
