#pragma once

#include "platform/windows.h"

#include <iosfwd>
#include <vector>

#include "base/xps/elementtagwriter.h"
#include "base/xps/fixedpagesaxhandlerbase.h"
#include "base/xps/gdiplusguard.h"

namespace base::xps {

// Writes the markup of a page back out as UTF-8 while a SAX reader parses it, drawn through the page matrix
// of an angle and a scale: the FixedPage gets its new size and boxes, and a Canvas with the matrix is put
// round all that it holds, so that its resources become the Canvas's. Every other element is copied; what is
// not an element or an attribute is dropped. Namespace declarations come as attributes, where the reader's
// defaults put them; the prefix mapping events that repeat them write nothing.
//
// A callback returns E_FAIL for an end tag too many and when the sink has failed; an exception becomes its
// mapped HRESULT.
class FixedPageContentHandler final : public FixedPageSaxHandlerBase {
  public:
    // Degrees. The sink is borrowed, must outlive this object and must not throw.
    FixedPageContentHandler(std::ostream& sink, float angle, float scale) noexcept;

    HRESULT STDMETHODCALLTYPE startDocument() override;
    HRESULT STDMETHODCALLTYPE startElement(const wchar_t* pNamespaceUri, int cchNamespaceUri,
                                           const wchar_t* pLocalName, int cchLocalName,
                                           const wchar_t* pQualifiedName, int cchQualifiedName,
                                           ISAXAttributes* pAttributes) override;
    HRESULT STDMETHODCALLTYPE endElement(const wchar_t* pNamespaceUri, int cchNamespaceUri,
                                         const wchar_t* pLocalName, int cchLocalName,
                                         const wchar_t* pQualifiedName, int cchQualifiedName) override;

  private:
    // Ends the elements that are still open, the innermost first.
    ~FixedPageContentHandler() override;

    void WritePage(ElementTagWriter& writer, std::wstring_view name,
                   std::span<const TagAttribute> attributes) const;
    [[nodiscard]] HRESULT SinkResult() const noexcept;

    GdiplusGuard m_guard;
    std::ostream& m_sink;
    std::vector<ElementTagWriter> m_openElements;
    float m_angle;
    float m_scale;
};

}  // namespace base::xps
