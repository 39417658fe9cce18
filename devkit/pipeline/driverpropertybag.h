#pragma once

#include "platform/windows.h"

#include <map>
#include <string>
#include <variant>

#include "devkit/pipeline/comobject.h"
#include "platform/printerpropertybag.h"

namespace devkit::pipeline {

template <>
struct Extended<IPrinterPropertyBag> {
    using Type = IDispatch;
};

using DriverValue = std::variant<bool, LONG, std::wstring>;
using DriverValues = std::map<std::wstring, DriverValue>;

// The driver property bag: named values that the driver was installed with, read only. A name that is not
// there, or is there with another type, answers E_ELEMENT_NOT_FOUND; the methods that write, blocks and
// streams answer E_NOTIMPL. Any thread may call.
class DriverPropertyBag final : public ComObject<IPrinterPropertyBag> {
  public:
    DriverPropertyBag(ContextPtr context, DriverValues values);

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

    const DriverValues m_values;
};

}  // namespace devkit::pipeline
