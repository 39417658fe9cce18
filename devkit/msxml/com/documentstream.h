#pragma once

#include "platform/windows.h"

#include "devkit/msxml/com/dispatchobject.h"
#include "devkit/msxml/com/domstate.h"
#include "platform/comptr.h"

namespace devkit::msxml {

// A document as a stream. Each stream that is asked from a document is a new one and stands on its own:
// - Read, Seek and Stat show the document as save would write it, as it was when the stream was first used,
// from the
//   start.
// - The first Write or SetSize makes it a stream for writing, empty at first. What is written goes into the
// document,
//   in place of its content, at Commit or when the stream is released for the last time, whichever comes
//   first, and again if more is written after a Commit. Where the stream stands then does not matter.
// Commit returns the code of parseError when the text is not well-formed; the last Release can only leave it
// there. References to the stream keep the document. Interfaces other than IStream are the document's.
class DocumentStream final : public IStream, private LiveCount {
  public:
    // The object is the one that stands for the document.
    DocumentStream(DomState& document, IUnknown& object) noexcept;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE Read(void* pBuffer, ULONG count, ULONG* pRead) override;
    HRESULT STDMETHODCALLTYPE Write(const void* pBytes, ULONG count, ULONG* pWritten) override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* pPosition) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    HRESULT STDMETHODCALLTYPE CopyTo(IStream* pTarget, ULARGE_INTEGER count, ULARGE_INTEGER* pRead,
                                     ULARGE_INTEGER* pWritten) override;
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Revert() override;
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count, DWORD type) override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* pStat, DWORD flags) override;
    // A plain stream on the same bytes with a position of its own; it does not lead back to the document.
    HRESULT STDMETHODCALLTYPE Clone(IStream** ppStream) override;

  private:
    ~DocumentStream() = default;

    [[nodiscard]] HRESULT PrepareReading() noexcept;
    [[nodiscard]] HRESULT PrepareWriting() noexcept;
    [[nodiscard]] HRESULT LoadWritten() noexcept;

    DomState& m_document;
    platform::ComPtr<IUnknown> m_pObject;  // keeps the document
    platform::ComPtr<IStream> m_pBytes;    // null until the first use
    bool m_isWriting = false;
    bool m_isPending = false;  // something was written that is not in the document yet
};

}  // namespace devkit::msxml
