#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "devkit/pipeline/job.h"
#include "devkit/pipeline/part.h"
#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// An object that is put between the parts of the input: `make` gives it when part number `before` (counted
// from 1, the XPS document being 1) is due.
struct ExtraPart {
    unsigned before = 1;
    std::function<platform::ComPtr<IUnknown>(const ContextPtr&)> make;
};

// Gives the parts of a document in the pipeline's order: the XPS document, the sequence, then each document
// followed by its pages; at the end S_OK and null, as often as it is asked.
class DocumentProvider final : public ComObject<IXpsDocumentProvider> {
  public:
    // The input must outlive the provider. `onAsked` is called with the number of each GetXpsPart call
    // (counted from 1) before it answers; it may be empty.
    DocumentProvider(ContextPtr context, std::shared_ptr<const JobInput> input,
                     std::vector<ExtraPart> extraParts, std::function<void(unsigned)> onAsked);

    // What was last given out ("FixedPage /1.fpage"), empty before the first part. Any thread may ask.
    [[nodiscard]] std::string LastGiven() const;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    HRESULT STDMETHODCALLTYPE GetXpsPart(IUnknown** ppPart) override;

  private:
    // The next part of the input, null at the end.
    PartPtr NextPart();
    platform::ComPtr<IUnknown> NextObject();

    const std::shared_ptr<const JobInput> m_input;
    std::vector<ExtraPart> m_extraParts;
    const std::function<void(unsigned)> m_onAsked;
    unsigned m_asked = 0;
    unsigned m_next = 1;  // the number of the next part of the input
    std::size_t m_document = 0;
    std::size_t m_page = 0;
    bool m_inDocument = false;
    mutable std::mutex m_lock;
    std::string m_lastGiven;
};

}  // namespace devkit::pipeline
