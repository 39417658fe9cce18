#pragma once

#include "platform/windows.h"

#include <cstddef>
#include <vector>

#include "devkit/pipeline/partobject.h"
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

// A page: its markup, its ticket and the resources that it uses. The markup that a read stream delivers stays
// as it was when the stream was taken, also while new markup is being written and after.
class FixedPageObject final : public StreamPartObject<IFixedPage> {
  public:
    using StreamPartObject::StreamPartObject;

    HRESULT STDMETHODCALLTYPE GetPrintTicket(IPartPrintTicket** ppPrintTicket) override;
    // A resource or the ticket by its name; E_ELEMENT_NOT_FOUND when the page has none of that name.
    HRESULT STDMETHODCALLTYPE GetPagePart(const wchar_t* uri, IUnknown** ppPart) override;
    // One stream at a time.
    HRESULT STDMETHODCALLTYPE GetWriteStream(IPrintWriteStream** ppWriteStream) override;
    HRESULT STDMETHODCALLTYPE SetPrintTicket(IPartPrintTicket* pPrintTicket) override;
    // Takes every part that the iterator gives: a ticket becomes the page's ticket, a resource of the same
    // name is replaced.
    HRESULT STDMETHODCALLTYPE SetPagePart(IUnknown* pPart) override;
    // Dissociates a resource or the ticket. E_ELEMENT_NOT_FOUND, and a breach, when the page has none of that
    // name.
    HRESULT STDMETHODCALLTYPE DeleteResource(const wchar_t* uri) override;
    HRESULT STDMETHODCALLTYPE GetXpsPartIterator(IXpsPartIterator** ppIterator) override;
};

}  // namespace devkit::pipeline
