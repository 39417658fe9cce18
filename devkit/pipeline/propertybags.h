#pragma once

#include "platform/windows.h"

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <variant>

#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"
#include "platform/printerpropertybag.h"
#include "platform/variant.h"

namespace devkit::pipeline {

// What GetProperty answers for a name that the bag does not hold.
inline constexpr HRESULT kPropertyMissing = E_ELEMENT_NOT_FOUND;

// A value of either bag that needs no object: VT_BOOL, VT_I4, VT_UI4 or VT_BSTR in the pipeline's.
using PropertyValue = std::variant<bool, LONG, ULONG, std::wstring>;
using PropertyValues = std::map<std::wstring, PropertyValue>;
using DriverValues = PropertyValues;

// The pipeline's property bag. Names are compared exactly. Values are copied in and out: texts and objects
// get a copy or a reference of their own, a bare VT_BYREF is copied as it stands, because VariantCopy refuses
// it. Any thread may call.
class PropertyBag final : public ComObject<IPrintPipelinePropertyBag> {
  public:
    explicit PropertyBag(ContextPtr context);

    // Puts or replaces a value. Throws std::system_error when it cannot be copied.
    void Put(std::wstring_view name, const VARIANT& value);
    void PutValue(std::wstring_view name, const PropertyValue& value);
    // Puts a borrowed handle as a bare VT_BYREF.
    void PutHandle(std::wstring_view name, HANDLE handle);

    // Replaces a value that is there; that one is the pipeline's is noted. E_INVALIDARG for a null pointer.
    HRESULT STDMETHODCALLTYPE AddProperty(const wchar_t* name, const VARIANT* value) override;
    // kPropertyMissing, with the value VT_EMPTY, when there is none of the name, which the context is told.
    HRESULT STDMETHODCALLTYPE GetProperty(const wchar_t* name, VARIANT* value) override;
    // That a value is the pipeline's is noted, but for "ProgressReport", which the filter that renders takes
    // out.
    BOOL STDMETHODCALLTYPE DeleteProperty(const wchar_t* name) override;

  private:
    struct Entry {
        platform::Variant value;
        bool isPipelines = false;  // and not a filter's
    };

    HRESULT Store(std::wstring_view name, const VARIANT& value, bool isPipelines);

    std::mutex m_lock;
    std::map<std::wstring, Entry, std::less<>> m_values;
};

// The driver's or the queue's property bag: named values that the driver was installed with, read only. A
// name that is not there, which the context is told, or is there with another type, answers
// E_ELEMENT_NOT_FOUND; the methods that write, blocks and streams answer E_NOTIMPL. Any thread may call.
class DriverBag final : public ComObject<IPrinterPropertyBag> {
  public:
    // `name` is the bag's in the pipeline's bag.
    DriverBag(ContextPtr context, std::string name, DriverValues values);

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pCount) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** ppInfo) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID reserved, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) override;

    HRESULT STDMETHODCALLTYPE GetBool(BSTR name, BOOL* pValue) override;
    HRESULT STDMETHODCALLTYPE SetBool(BSTR name, BOOL value) override;
    HRESULT STDMETHODCALLTYPE GetInt32(BSTR name, LONG* pValue) override;
    HRESULT STDMETHODCALLTYPE SetInt32(BSTR name, LONG value) override;
    HRESULT STDMETHODCALLTYPE GetString(BSTR name, BSTR* pValue) override;
    HRESULT STDMETHODCALLTYPE SetString(BSTR name, BSTR value) override;
    HRESULT STDMETHODCALLTYPE GetBytes(BSTR name, DWORD* pcbValue, BYTE** ppValue) override;
    HRESULT STDMETHODCALLTYPE SetBytes(BSTR name, DWORD cbValue, BYTE* pValue) override;
    HRESULT STDMETHODCALLTYPE GetReadStream(BSTR name, IStream** ppStream) override;
    HRESULT STDMETHODCALLTYPE GetWriteStream(BSTR name, IStream** ppStream) override;

  private:
    // S_OK with the value's address, borrowed, or the failure.
    template <typename Value>
    HRESULT Find(const char* method, BSTR name, const Value** ppValue);

    const std::string m_name;
    const DriverValues m_values;
};

}  // namespace devkit::pipeline
