#pragma once

#include <string>

#include "devkit/msxml/nodeobject.h"

namespace devkit::msxml {

// A processing instruction. The XML declaration is one too, with the target "xml", and then has attributes:
// version, encoding and standalone. They follow from its data and are read-only.
class ProcessingInstruction final : public NodeObject<IXMLDOMProcessingInstruction> {
  public:
    ProcessingInstruction(Document& document, SharedName pTarget) noexcept;

    [[nodiscard]] const NodeChain* Attributes() const noexcept override;
    // For a declaration the data is brought to the form version="…" encoding="…" standalone="…". Throws
    // ComError with XmlBadDeclaration when it is not a declaration's.
    void SetData(std::wstring data) override;

    HRESULT STDMETHODCALLTYPE get_target(BSTR* pTarget) override { return GetNodeName(*this, pTarget); }
    HRESULT STDMETHODCALLTYPE get_data(BSTR* pData) override { return ReturnText(Data(), pData); }
    HRESULT STDMETHODCALLTYPE put_data(BSTR data) override { return PutText(*this, data); }

  private:
    void AddAttribute(std::wstring_view name, const std::wstring& value);

    NodeChain m_attributes;
};

}  // namespace devkit::msxml
