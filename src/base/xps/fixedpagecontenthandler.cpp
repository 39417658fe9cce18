#include "base/xps/fixedpagecontenthandler.h"

#include <ostream>
#include <string_view>

#include "base/logging/boundary.h"

namespace base::xps {
namespace {

// Constants, so that their lengths are not counted for each element.
constexpr std::wstring_view kPage = L"FixedPage";
constexpr std::wstring_view kPageResources = L"FixedPage.Resources";
constexpr std::wstring_view kCanvasResources = L"Canvas.Resources";

}  // namespace

FixedPageContentHandler::FixedPageContentHandler(std::ostream& sink, float angle, float scale) noexcept
    : m_sink(sink), m_angle(angle), m_scale(scale) {}

FixedPageContentHandler::~FixedPageContentHandler() {
    while (!m_openElements.empty()) m_openElements.pop_back();
}

HRESULT STDMETHODCALLTYPE FixedPageContentHandler::startDocument() {
    return logging::Guarded([this] {
        m_sink << R"(<?xml version="1.0" encoding="utf-8"?>)";
        return SinkResult();
    });
}

HRESULT STDMETHODCALLTYPE FixedPageContentHandler::startElement(const wchar_t*, int,
                                                                const wchar_t* pLocalName, int cchLocalName,
                                                                const wchar_t* pQualifiedName,
                                                                int cchQualifiedName,
                                                                ISAXAttributes* pAttributes) {
    return logging::Guarded([&] {
        const std::wstring_view localName = TextOf(pLocalName, cchLocalName);
        const std::wstring_view name = TextOf(pQualifiedName, cchQualifiedName);
        const std::span<const TagAttribute> attributes = ReadAttributes(pAttributes);

        ElementTagWriter writer(m_sink);
        if (localName == kPage) {
            WritePage(writer, name, attributes);
        } else {
            writer.WriteStartTag(localName == kPageResources ? kCanvasResources : name, attributes);
        }
        m_openElements.push_back(std::move(writer));
        return SinkResult();
    });
}

HRESULT STDMETHODCALLTYPE FixedPageContentHandler::endElement(const wchar_t*, int, const wchar_t*, int,
                                                              const wchar_t*, int) {
    if (m_openElements.empty()) return E_FAIL;
    m_openElements.pop_back();
    return SinkResult();
}

void FixedPageContentHandler::WritePage(ElementTagWriter& writer, std::wstring_view name,
                                        std::span<const TagAttribute> attributes) const {
    AttributeTable table = ToTable(attributes);
    const Box page = ReadPage(table);
    Matrix matrix;
    BuildPageMatrix(page, m_angle, m_scale, matrix);
    RewriteSize(table, page, matrix);
    RewriteBleedBox(table, page, matrix);
    RewriteContentBox(table, page, matrix);
    writer.WriteStartTag(name, ToAttributes(table));
    writer.WriteStartTag(L"Canvas " + FormatRenderTransform(matrix));
}

HRESULT FixedPageContentHandler::SinkResult() const noexcept { return m_sink.fail() ? E_FAIL : S_OK; }

}  // namespace base::xps
