#pragma once

#include "platform/windows.h"

#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "devkit/pipeline/comobject.h"
#include "platform/filterpipeline.h"
#include "platform/variant.h"

namespace devkit::pipeline {

// What GetProperty answers for a name that the bag does not hold.
inline constexpr HRESULT PropertyMissing = E_ELEMENT_NOT_FOUND;

// The pipeline's property bag. Names are compared exactly. Values are copied in and out: texts and objects
// get a copy or a reference of their own, a bare VT_BYREF is copied as it stands, because VariantCopy refuses
// it. Any thread may call.
class PropertyBag final : public ComObject<IPrintPipelinePropertyBag> {
  public:
    explicit PropertyBag(ContextPtr context);

    // Puts or replaces a value. Throws std::system_error when it cannot be copied.
    void Put(std::wstring_view name, const VARIANT& value);
    // Puts a borrowed handle as a bare VT_BYREF.
    void PutHandle(std::wstring_view name, HANDLE handle);

    // Replaces a value that is there. E_INVALIDARG for a null pointer.
    HRESULT STDMETHODCALLTYPE AddProperty(const wchar_t* name, const VARIANT* value) override;
    // PropertyMissing, with the value VT_EMPTY, when there is none of the name.
    HRESULT STDMETHODCALLTYPE GetProperty(const wchar_t* name, VARIANT* value) override;
    BOOL STDMETHODCALLTYPE DeleteProperty(const wchar_t* name) override;

  private:
    HRESULT Store(std::wstring_view name, const VARIANT& value);

    std::mutex m_lock;
    std::map<std::wstring, platform::Variant, std::less<>> m_values;
};

}  // namespace devkit::pipeline
