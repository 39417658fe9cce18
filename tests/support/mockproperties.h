#pragma once

#include "platform/windows.h"

#include <map>
#include <string>
#include <utility>

#include "callrecorder.h"
#include "mockobject.h"
#include "platform/bstr.h"
#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/printerpropertybag.h"

namespace tests {

// The pipeline's property bag; calls are noted as "GetProperty NAME". A name that was not set answers
// E_ELEMENT_NOT_FOUND. A call that is made to fail leaves the value behind all the same, for the caller to
// clear.
class MockPropertyBag : public MockObject<IPrintPipelinePropertyBag> {
  public:
    explicit MockPropertyBag(CallRecorder& calls) : m_calls(calls) {}

    void SetText(const std::wstring& name, std::wstring text) {
        m_values[name] = {VT_BSTR, {}, nullptr, std::move(text)};
    }
    // The value holds a reference.
    void SetObject(const std::wstring& name, IUnknown* object) {
        m_values[name] = {VT_UNKNOWN, platform::ComPtr<IUnknown>(object), nullptr, {}};
    }
    // A bare VT_BYREF that carries the handle itself.
    void SetHandle(const std::wstring& name, HANDLE handle) { m_values[name] = {VT_BYREF, {}, handle, {}}; }
    void SetEmpty(const std::wstring& name) { m_values[name] = {VT_EMPTY, {}, nullptr, {}}; }
    void Remove(const std::wstring& name) { m_values.erase(name); }

    HRESULT STDMETHODCALLTYPE AddProperty(const wchar_t*, const VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetProperty(const wchar_t* name, VARIANT* pValue) override {
        const HRESULT hr = m_calls.Enter("GetProperty " + Narrow(name));
        const auto found = m_values.find(name);
        if (found == m_values.end()) return FAILED(hr) ? hr : E_ELEMENT_NOT_FOUND;
        const Value& value = found->second;
        VariantInit(pValue);
        pValue->vt = value.type;
        if (value.type == VT_BSTR) pValue->bstrVal = platform::Bstr(value.text).Detach();
        if (value.type == VT_UNKNOWN) pValue->punkVal = platform::ComPtr<IUnknown>(value.object).Detach();
        if (value.type == VT_BYREF) pValue->byref = value.handle;
        return hr;
    }
    BOOL STDMETHODCALLTYPE DeleteProperty(const wchar_t*) override { return FALSE; }

  private:
    struct Value {
        VARTYPE type = VT_EMPTY;
        platform::ComPtr<IUnknown> object;
        HANDLE handle = nullptr;
        std::wstring text;
    };

    CallRecorder& m_calls;
    std::map<std::wstring, Value> m_values;
};

// The driver's property bag; calls are noted as "GetInt32 NAME" and "GetString NAME". Only these two work. A
// call that is made to fail leaves the value behind all the same, for the caller to free.
class MockPrinterPropertyBag : public MockObject<IPrinterPropertyBag> {
  public:
    explicit MockPrinterPropertyBag(CallRecorder& calls) : m_calls(calls) {}

    void SetNumber(const std::wstring& name, LONG value) { m_numbers[name] = value; }
    void SetText(const std::wstring& name, std::wstring value) { m_texts[name] = std::move(value); }

    HRESULT STDMETHODCALLTYPE GetInt32(BSTR name, LONG* pValue) override {
        const HRESULT hr = m_calls.Enter("GetInt32 " + Narrow(name));
        const auto found = m_numbers.find(name);
        if (found == m_numbers.end()) return FAILED(hr) ? hr : E_ELEMENT_NOT_FOUND;
        *pValue = found->second;
        return hr;
    }
    HRESULT STDMETHODCALLTYPE GetString(BSTR name, BSTR* pValue) override {
        *pValue = nullptr;
        const HRESULT hr = m_calls.Enter("GetString " + Narrow(name));
        const auto found = m_texts.find(name);
        if (found == m_texts.end()) return FAILED(hr) ? hr : E_ELEMENT_NOT_FOUND;
        *pValue = platform::Bstr(found->second).Detach();
        return hr;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetBool(BSTR, BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetBool(BSTR, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetInt32(BSTR, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetString(BSTR, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetBytes(BSTR, DWORD*, BYTE**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetBytes(BSTR, DWORD, BYTE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetReadStream(BSTR, IStream**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetWriteStream(BSTR, IStream**) override { return E_NOTIMPL; }

  private:
    CallRecorder& m_calls;
    std::map<std::wstring, LONG> m_numbers;
    std::map<std::wstring, std::wstring> m_texts;
};

}  // namespace tests
