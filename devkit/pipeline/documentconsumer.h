#pragma once

#include "platform/windows.h"

#include <mutex>
#include <string>
#include <vector>

#include "devkit/pipeline/partsource.h"
#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// Takes the parts that a filter sends, in the pipeline's order, and holds the filter to the rules: each
// breach is recorded and the call fails. After a cancellation every Send fails with kJobCancelled, and
// neither a late part nor a second CloseSender is a breach. Any thread may call.
class DocumentConsumer final : public ComObject<IXpsDocumentConsumer> {
  public:
    // What is sent goes on to the next filter through the channel, where there is one.
    explicit DocumentConsumer(ContextPtr context, std::shared_ptr<PartChannel> next = nullptr);

    // What was sent, in order.
    [[nodiscard]] SentParts Sent() const;
    // The same at the end, when nothing of it is to be kept here.
    [[nodiscard]] SentParts TakeSent();
    // The parts that the filter made and did nothing with, in the order of their making.
    [[nodiscard]] std::vector<std::string> Unattached() const;
    // Whether CloseSender was called, with whatever result.
    [[nodiscard]] bool IsClosed() const;
    // Releases the objects of the filter's own that it sent.
    void ReleaseForeignParts();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    // An object of the filter's own is accepted, a part with a method of its own is not.
    HRESULT STDMETHODCALLTYPE SendXpsUnknown(IUnknown* pUnknown) override;
    HRESULT STDMETHODCALLTYPE SendXpsDocument(IXpsDocument* pXpsDocument) override;
    HRESULT STDMETHODCALLTYPE
    SendFixedDocumentSequence(IFixedDocumentSequence* pFixedDocumentSequence) override;
    HRESULT STDMETHODCALLTYPE SendFixedDocument(IFixedDocument* pFixedDocument) override;
    HRESULT STDMETHODCALLTYPE SendFixedPage(IFixedPage* pFixedPage) override;
    HRESULT STDMETHODCALLTYPE CloseSender() override;
    // Any name is taken as it comes; the writer of the output makes it legal and unique.
    HRESULT STDMETHODCALLTYPE GetNewEmptyPart(const wchar_t* uri, REFIID iid, void** ppNewPart,
                                              IPrintWriteStream** ppWriteStream) override;

  private:
    struct Counts {
        unsigned documents = 0;  // XPS documents
        unsigned sequences = 0;
        unsigned fixedDocuments = 0;
    };

    HRESULT Send(const char* method, PartKind kind, IUnknown* pObject);
    HRESULT Take(const char* method, PartKind kind, IUnknown* pObject, const PartPtr& part);
    HRESULT CheckOpen(const std::string& what);
    HRESULT CheckOrder(PartKind kind, const std::string& title);
    HRESULT CheckWhole(Part& part);
    void Record(PartKind kind, const PartPtr& part);
    void Settle(Part& part);
    void LetGoOfEarlier();

    const std::shared_ptr<PartChannel> m_next;
    mutable std::mutex m_lock;
    bool m_closed = false;
    Counts m_counts;
    SentParts m_sent;
    std::vector<PartPtr> m_made;  // by the filter; what it used is forgotten when a part is sent
    std::vector<platform::ComPtr<IUnknown>> m_foreign;
};

}  // namespace devkit::pipeline
