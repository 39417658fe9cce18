#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <vector>

#include "devkit/pipeline/comobject.h"
#include "devkit/pipeline/part.h"
#include "platform/filterpipeline.h"

namespace devkit::pipeline {

// Goes over the parts of a page as they were when it was made: the ticket, when there is one, then the
// resources.
class PartIterator final : public ComObject<IXpsPartIterator> {
  public:
    PartIterator(ContextPtr context, const PartPtr& page);

    void STDMETHODCALLTYPE Reset() override;
    // E_ELEMENT_NOT_FOUND past the end.
    HRESULT STDMETHODCALLTYPE Current(BSTR* pUri, IUnknown** ppPart) override;
    BOOL STDMETHODCALLTYPE IsDone() override;
    void STDMETHODCALLTYPE Next() override;

  private:
    std::vector<PartPtr> m_parts;
    std::size_t m_index = 0;
};

}  // namespace devkit::pipeline
