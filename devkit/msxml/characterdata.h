#pragma once

#include <utility>

#include "devkit/msxml/charactereditor.h"
#include "devkit/msxml/leaves.h"
#include "devkit/msxml/nodeobject.h"

namespace devkit::msxml {

// The methods of IXMLDOMCharacterData for text, CDATA sections and comments.
template <typename Interface, typename... Bases>
class CharacterData : public NodeObject<Interface, IXMLDOMCharacterData, Bases...> {
  public:
    HRESULT STDMETHODCALLTYPE get_data(BSTR* pData) override { return ReturnText(this->Data(), pData); }
    HRESULT STDMETHODCALLTYPE put_data(BSTR data) override { return PutText(*this, data); }
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override { return GetDataLength(*this, pLength); }
    HRESULT STDMETHODCALLTYPE substringData(long offset, long count, BSTR* pData) override {
        return SubstringData(*this, offset, count, pData);
    }
    HRESULT STDMETHODCALLTYPE appendData(BSTR data) override {
        return ReplaceData(*this, static_cast<long>(this->Data().size()), 0, data);
    }
    HRESULT STDMETHODCALLTYPE insertData(long offset, BSTR data) override {
        return ReplaceData(*this, offset, 0, data);
    }
    HRESULT STDMETHODCALLTYPE deleteData(long offset, long count) override {
        return ReplaceData(*this, offset, count, nullptr);
    }
    HRESULT STDMETHODCALLTYPE replaceData(long offset, long count, BSTR data) override {
        return ReplaceData(*this, offset, count, data);
    }

  protected:
    using NodeObject<Interface, IXMLDOMCharacterData, Bases...>::NodeObject;
};

class Comment final : public CharacterData<IXMLDOMComment> {
  public:
    explicit Comment(Document& document) noexcept : CharacterData(NODE_COMMENT, document, nullptr) {}
};

class Text final : public CharacterData<IXMLDOMText> {
  public:
    explicit Text(Document& document) noexcept : CharacterData(NODE_TEXT, document, nullptr) {}

    HRESULT STDMETHODCALLTYPE splitText(long offset, IXMLDOMText** ppRight) override;
};

class CdataSection final : public CharacterData<IXMLDOMCDATASection, IXMLDOMText> {
  public:
    explicit CdataSection(Document& document) noexcept
        : CharacterData(NODE_CDATA_SECTION, document, nullptr) {}

    HRESULT STDMETHODCALLTYPE splitText(long offset, IXMLDOMText** ppRight) override;
};

}  // namespace devkit::msxml
