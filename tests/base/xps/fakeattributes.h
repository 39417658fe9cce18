#pragma once

#include "platform/windows.h"

#include <string>
#include <vector>

#include "base/xps/memorystreams.h"
#include "platform/msxml6.h"

namespace base::xps {

// The attributes of one start tag, as a SAX reader hands them to its handler; one of its calls can be made to
// fail.
class FakeAttributes final : public FakeObject<ISAXAttributes> {
  public:
    struct Attribute {
        std::wstring localName;
        std::wstring name;
        std::wstring value;
    };

    explicit FakeAttributes(std::vector<Attribute> attributes) : m_attributes(std::move(attributes)) {}

    HRESULT STDMETHODCALLTYPE getLength(int* pLength) override {
        if (FAILED(lengthResult)) return lengthResult;
        *pLength = static_cast<int>(m_attributes.size());
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE getURI(int, const wchar_t**, int*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getLocalName(int index, const wchar_t** ppText, int* pLength) override {
        if (index == nullLocalName) return GiveNothing(ppText, pLength);
        return Give(failingName, index, m_attributes[AsIndex(index)].localName, ppText, pLength);
    }
    HRESULT STDMETHODCALLTYPE getQName(int index, const wchar_t** ppText, int* pLength) override {
        if (index == nullName) return GiveNothing(ppText, pLength);
        return Give(failingName, index, m_attributes[AsIndex(index)].name, ppText, pLength);
    }
    HRESULT STDMETHODCALLTYPE getName(int index, const wchar_t** ppUri, int* pUriLength,
                                      const wchar_t** ppLocalName, int* pLocalLength, const wchar_t** ppName,
                                      int* pNameLength) override {
        *ppUri = L"";
        *pUriLength = 0;
        const HRESULT result = getLocalName(index, ppLocalName, pLocalLength);
        return FAILED(result) ? result : getQName(index, ppName, pNameLength);
    }
    HRESULT STDMETHODCALLTYPE getIndexFromName(const wchar_t*, int, const wchar_t*, int, int*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE getIndexFromQName(const wchar_t*, int, int*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getType(int, const wchar_t**, int*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE getTypeFromName(const wchar_t*, int, const wchar_t*, int, const wchar_t**,
                                              int*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE getTypeFromQName(const wchar_t*, int, const wchar_t**, int*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE getValue(int index, const wchar_t** ppText, int* pLength) override {
        if (index == nullValue) return GiveNothing(ppText, pLength);
        return Give(failingValue, index, m_attributes[AsIndex(index)].value, ppText, pLength);
    }
    HRESULT STDMETHODCALLTYPE getValueFromName(const wchar_t*, int, const wchar_t*, int, const wchar_t**,
                                               int*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE getValueFromQName(const wchar_t*, int, const wchar_t**, int*) override {
        return E_NOTIMPL;
    }

    HRESULT lengthResult = S_OK;
    int failingName = -1;
    int failingValue = -1;
    // Whose text has no storage, and how long it is said to be.
    int nullLocalName = -1;
    int nullName = -1;
    int nullValue = -1;
    int nullLength = 0;

  private:
    HRESULT GiveNothing(const wchar_t** ppText, int* pLength) const {
        *ppText = nullptr;
        *pLength = nullLength;
        return S_OK;
    }
    static std::size_t AsIndex(int index) { return static_cast<std::size_t>(index); }
    static HRESULT Give(int failing, int index, const std::wstring& text, const wchar_t** ppText,
                        int* pLength) {
        if (index == failing) return E_OUTOFMEMORY;
        *ppText = text.data();
        *pLength = static_cast<int>(text.size());
        return S_OK;
    }

    std::vector<Attribute> m_attributes;
};

}  // namespace base::xps
