#pragma once

#include "platform/windows.h"

#include <ocidl.h>

namespace devkit::msxml {

class Document;

// The IPersistStreamInit side of a document, which serves as its IPersistStream too. It has no life of its
// own: references and queries go to the document.
class DocumentPersistence final : public IPersistStreamInit {
  public:
    explicit DocumentPersistence(Document& document) noexcept : m_document(document) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClass) override;
    // S_OK when the document has changed since it was loaded or saved with fClearDirty, else S_FALSE.
    HRESULT STDMETHODCALLTYPE IsDirty() override;
    // Reads from the current position to the end. The code of parseError when the text is not well-formed.
    HRESULT STDMETHODCALLTYPE Load(IStream* pStream) override;
    HRESULT STDMETHODCALLTYPE Save(IStream* pStream, BOOL clearDirty) override;
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* pSize) override;
    // Empties the document.
    HRESULT STDMETHODCALLTYPE InitNew() override;

  private:
    Document& m_document;
    unsigned long long m_cleanChanges = 0;
};

}  // namespace devkit::msxml
