#pragma once

// IPrinterPropertyBag, the driver's and the queue's property bag, as printerextension.h of the Windows Driver
// Kit declares it; MinGW has no such header. Names are BSTRs; strings and blocks handed out are the caller's
// to free.

#include "platform/windows.h"

#include "platform/guid.h"

struct PLATFORM_UUID("fea77364-df95-4a23-a905-019b79a8e481") IPrinterPropertyBag : public IDispatch {
    virtual HRESULT STDMETHODCALLTYPE GetBool(BSTR name, BOOL* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBool(BSTR name, BOOL value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInt32(BSTR name, LONG* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetInt32(BSTR name, LONG value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetString(BSTR name, BSTR* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetString(BSTR name, BSTR value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetBytes(BSTR name, DWORD* pcbValue, BYTE** ppValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetBytes(BSTR name, DWORD cbValue, BYTE* pValue) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetReadStream(BSTR name, IStream** ppStream) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetWriteStream(BSTR name, IStream** ppStream) = 0;
};

PLATFORM_INTERFACE_UUID(IPrinterPropertyBag, 0xfea77364, 0xdf95, 0x4a23, 0xa9, 0x05, 0x01, 0x9b, 0x79, 0xa8,
                        0xe4, 0x81)

PLATFORM_INTERFACE_EXTENDS(IPrinterPropertyBag, IDispatch)
