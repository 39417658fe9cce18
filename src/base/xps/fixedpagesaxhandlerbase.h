#pragma once

#include "platform/windows.h"

#include <map>
#include <span>
#include <string>
#include <vector>

#include "base/xps/elementtagwriter.h"
#include "base/xps/pagegeometry.h"
#include "platform/comobject.h"
#include "platform/msxml6.h"

namespace base::xps {

// A SAX content handler that ignores every event, with the operations on attributes that a handler of page
// markup needs. Made with one reference, which is the maker's.
class FixedPageSaxHandlerBase : public platform::ComIdentity<platform::ReferenceCount, ISAXContentHandler> {
  public:
    HRESULT STDMETHODCALLTYPE putDocumentLocator(ISAXLocator*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE startDocument() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE endDocument() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE startPrefixMapping(const wchar_t*, int, const wchar_t*, int) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE endPrefixMapping(const wchar_t*, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE startElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*, int,
                                           ISAXAttributes*) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE endElement(const wchar_t*, int, const wchar_t*, int, const wchar_t*,
                                         int) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE characters(const wchar_t*, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ignorableWhitespace(const wchar_t*, int) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE processingInstruction(const wchar_t*, int, const wchar_t*, int) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE skippedEntity(const wchar_t*, int) override { return S_OK; }

  protected:
    ~FixedPageSaxHandlerBase() override = default;

    struct AttributeValue {
        std::wstring text;
        bool isEscaped = false;
    };
    // Keyed by qualified name.
    using AttributeTable = std::map<std::wstring, AttributeValue, std::less<>>;

    // The text of a callback's arguments; without storage when the pointer is null.
    [[nodiscard]] static std::wstring_view TextOf(const wchar_t* text, int length) noexcept;

    // The attributes in the parser's order, valid until the callback returns or the next call; none when any
    // of them cannot be read.
    [[nodiscard]] std::span<const TagAttribute> ReadAttributes(ISAXAttributes* pAttributes);

    // Of two attributes with the same name, the later one stays.
    [[nodiscard]] static AttributeTable ToTable(std::span<const TagAttribute> attributes);
    // In the order of the names; the texts are the table's.
    [[nodiscard]] static std::vector<TagAttribute> ToAttributes(const AttributeTable& table);

    // The page (0, 0, Width, Height). A missing attribute is added, empty, and counts as 0.
    [[nodiscard]] static Box ReadPage(AttributeTable& table);

    // Sets Width and Height to what the matrix makes of the page. base::exception::Error when one is missing.
    static void RewriteSize(AttributeTable& table, const Box& page, const Matrix& matrix);

    // Gives the box the size that the matrix makes of it, leaves its left top corner where it is, and writes
    // its four edges. A box that cannot be read is removed; so is a bleed box that then does not cover the
    // page as it was before it was turned, and a content box that is not covered by it.
    static void RewriteBleedBox(AttributeTable& table, const Box& page, const Matrix& matrix);
    static void RewriteContentBox(AttributeTable& table, const Box& page, const Matrix& matrix);

    // "x,y,width,height". std::invalid_argument for empty text and for any other count of values.
    [[nodiscard]] static Box ParseBox(std::wstring_view text);

  private:
    using BoxTest = bool (*)(const Box& page, const Box& box);
    static void RewriteBox(AttributeTable& table, std::wstring_view name, BoxTest isRemoved, const Box& page,
                           const Matrix& matrix);

    std::vector<TagAttribute> m_attributes;
};

}  // namespace base::xps
