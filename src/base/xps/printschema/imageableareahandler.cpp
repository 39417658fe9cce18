#include "base/xps/printschema/imageableareahandler.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/logging/check.h"
#include "base/xps/printschema/mediasizedata.h"
#include "base/xps/printschema/printschemahandler.h"
#include "base/xps/printschema/ticketdocument.h"
#include "platform/comptr.h"

namespace base::xps::printschema {

using logging::ThrowIfFailed;
using platform::ComPtr;

namespace {

[[nodiscard]] ComPtr<IXMLDOMDocument2> CapabilitiesFor(PrintTicketProvider& provider,
                                                       const MediaSizeOption& mediaSize) {
    ComPtr<IXMLDOMDocument2> pPageTicket;
    ThrowIfFailed(provider.ReadTicket(kPTPageScope, pPageTicket.Put()));
    ComPtr<IXMLDOMDocument2> pTicket;
    ThrowIfFailed(CopyTicket(pPageTicket.Get(), pTicket));
    MediaSizeData(mediaSize).Write(pTicket.Get());

    ComPtr<IXMLDOMDocument2> pCapabilities;
    ThrowIfFailed(provider.GetPrintCapabilities(pTicket.Get(), pCapabilities.Put()));
    return pCapabilities;
}

[[nodiscard]] std::wstring QueryFor(const PrintSchemaHandler& handler, const wchar_t* propertyName) {
    return handler.PropertyQuery({SchemaNamespace::Keywords, propertyName});
}

[[nodiscard]] bool HasArea(const MediaDimensions& size) noexcept { return size.width > 0 && size.height > 0; }

[[nodiscard]] MediaDimensions SizeToFill(const MediaSizeOption& medium, ImageableAreaSource* pSource) {
    ImageableAreaInfo area;
    const bool known = pSource != nullptr && SUCCEEDED(pSource->GetImageableArea(medium, area));
    return known ? area.extent : medium.size;
}

}  // namespace

HRESULT ImageableAreaHandler::GetImageableArea(const MediaSizeOption& mediaSize, ImageableAreaInfo& area) {
    const ComPtr<IXMLDOMDocument2> pCapabilities = CapabilitiesFor(m_provider, mediaSize);
    const PrintCapabilitiesHandler handler(pCapabilities.Get());
    // Each query looks below the property that the value belongs to, so that a name used elsewhere is not
    // taken for it.
    const std::wstring page = QueryFor(handler, L"PageImageableSize");
    const std::wstring rectangle = page + QueryFor(handler, L"ImageableArea");
    const std::pair<std::wstring, std::int32_t*> values[] = {
        {page + QueryFor(handler, L"ImageableSizeWidth"), &area.imageableSize.width},
        {page + QueryFor(handler, L"ImageableSizeHeight"), &area.imageableSize.height},
        {rectangle + QueryFor(handler, L"OriginWidth"), &area.origin.width},
        {rectangle + QueryFor(handler, L"OriginHeight"), &area.origin.height},
        {rectangle + QueryFor(handler, L"ExtentWidth"), &area.extent.width},
        {rectangle + QueryFor(handler, L"ExtentHeight"), &area.extent.height},
    };
    for (const auto& [query, pValue] : values) {
        const HRESULT hr = handler.ReadInteger(query, pValue);
        if (FAILED(hr)) return hr;
    }
    return S_OK;
}

double MediaScaleFactor(const MediaDimensions& current, const MediaSizeOption& fallback,
                        ImageableAreaSource* pSource) {
    const MediaDimensions filled = SizeToFill(fallback, pSource);
    if (!HasArea(current) || !HasArea(filled)) return 1.0;
    return std::min(static_cast<double>(filled.width) / current.width,
                    static_cast<double>(filled.height) / current.height);
}

}  // namespace base::xps::printschema
