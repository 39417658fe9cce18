#pragma once

#include "platform/windows.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "devkit/pipeline/partsource.h"
#include "devkit/pipeline/runcontext.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// An object that is put between the parts of the input: `make` gives it when part number `before` (counted
// from 1, the XPS document being 1) is due.
struct ExtraPart {
    unsigned before = 1;
    std::function<platform::ComPtr<IUnknown>(const ContextPtr&)> make;
};

// Gives what its source has, one part after the other; at the end S_OK and null, as often as it is asked.
class DocumentProvider final : public ComObject<IXpsDocumentProvider> {
  public:
    // `onAsked` is called with the number of each GetXpsPart call
    // (counted from 1) before it answers; it may be empty.
    DocumentProvider(ContextPtr context, std::shared_ptr<PartSource> source,
                     std::vector<ExtraPart> extraParts, std::function<void(unsigned)> onAsked);

    // What was last given out ("FixedPage /1.fpage"), empty before the first part. Any thread may ask.
    [[nodiscard]] std::string LastGiven() const;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** ppObject) override;
    HRESULT STDMETHODCALLTYPE GetXpsPart(IUnknown** ppPart) override;

  private:
    HRESULT GiveNext(IUnknown** ppPart);
    [[nodiscard]] platform::ComPtr<IUnknown> ObjectOf(GivenPart given) const;
    void SetLastGiven(std::string text);

    const std::shared_ptr<PartSource> m_source;
    std::vector<ExtraPart> m_extraParts;
    const std::function<void(unsigned)> m_onAsked;
    unsigned m_asked = 0;
    unsigned m_next = 1;  // the number of the next part of the source
    mutable std::mutex m_lock;
    std::string m_lastGiven;
};

}  // namespace devkit::pipeline
