#pragma once

#include "devkit/msxml/com/answer.h"
#include "devkit/msxml/com/nodeobject.h"

namespace devkit::msxml {

// An attribute, namespace declarations included.
class AttributeObject final : public NodeObject<IXMLDOMAttribute> {
  public:
    explicit AttributeObject(Node& node) noexcept : NodeObject(node) {}

    HRESULT STDMETHODCALLTYPE get_name(BSTR* pName) override { return GetNodeName(TheNode(), pName); }
    HRESULT STDMETHODCALLTYPE get_value(VARIANT* pValue) override { return GetNodeValue(TheNode(), pValue); }
    HRESULT STDMETHODCALLTYPE put_value(VARIANT value) override { return PutNodeValue(TheNode(), value); }
};

// A processing instruction. The XML declaration is one too, with the target "xml", and then has attributes:
// version, encoding and standalone.
class InstructionObject final : public NodeObject<IXMLDOMProcessingInstruction> {
  public:
    explicit InstructionObject(Node& node) noexcept : NodeObject(node) {}

    HRESULT STDMETHODCALLTYPE get_target(BSTR* pTarget) override { return GetNodeName(TheNode(), pTarget); }
    HRESULT STDMETHODCALLTYPE get_data(BSTR* pData) override { return ReturnText(TheNode().Data(), pData); }
    HRESULT STDMETHODCALLTYPE put_data(BSTR data) override { return PutData(TheNode(), data); }
};

// The methods of IXMLDOMCharacterData for text, CDATA sections and comments. Their data is read and put as a
// whole; editing within it is not offered: E_NOTIMPL.
template <typename Interface, typename... Bases>
class CharacterData : public NodeObject<Interface, IXMLDOMCharacterData, Bases...> {
  public:
    HRESULT STDMETHODCALLTYPE get_data(BSTR* pData) override {
        return ReturnText(this->TheNode().Data(), pData);
    }
    HRESULT STDMETHODCALLTYPE put_data(BSTR data) override { return PutData(this->TheNode(), data); }
    HRESULT STDMETHODCALLTYPE get_length(long* pLength) override {
        return ReturnNumber(static_cast<long>(this->TheNode().Data().size()), pLength);
    }
    HRESULT STDMETHODCALLTYPE substringData(long, long, BSTR* pData) override {
        return ReturnNoText(pData) == S_FALSE ? E_NOTIMPL : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE appendData(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE insertData(long, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE deleteData(long, long) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE replaceData(long, long, BSTR) override { return E_NOTIMPL; }

  protected:
    using NodeObject<Interface, IXMLDOMCharacterData, Bases...>::NodeObject;
    ~CharacterData() = default;
};

class CommentObject final : public CharacterData<IXMLDOMComment> {
  public:
    explicit CommentObject(Node& node) noexcept : CharacterData(node) {}
};

class TextObject final : public CharacterData<IXMLDOMText> {
  public:
    explicit TextObject(Node& node) noexcept : CharacterData(node) {}

    HRESULT STDMETHODCALLTYPE splitText(long, IXMLDOMText** ppRight) override { return NotOffered(ppRight); }
};

class CdataObject final : public CharacterData<IXMLDOMCDATASection, IXMLDOMText> {
  public:
    explicit CdataObject(Node& node) noexcept : CharacterData(node) {}

    HRESULT STDMETHODCALLTYPE splitText(long, IXMLDOMText** ppRight) override { return NotOffered(ppRight); }
};

class FragmentObject final : public NodeObject<IXMLDOMDocumentFragment> {
  public:
    explicit FragmentObject(Node& node) noexcept : NodeObject(node) {}
};

class EntityReferenceObject final : public NodeObject<IXMLDOMEntityReference> {
  public:
    explicit EntityReferenceObject(Node& node) noexcept : NodeObject(node) {}
};

}  // namespace devkit::msxml
