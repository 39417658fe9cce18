#include "base/xps/printschema/ticketdocument.h"

#include <utility>

#include "base/io/printreadstreamtoistream.h"
#include "platform/variant.h"

namespace base::xps::printschema {

using platform::ComPtr;

namespace {

using Ticket = ComPtr<IXMLDOMDocument2>;

// From where the stream stands.
[[nodiscard]] HRESULT Load(IStream* pStream, Ticket& ticket) {
    Ticket loaded;
    HRESULT hr = CreateTicket(loaded);
    if (FAILED(hr)) return hr;
    const platform::Variant source(static_cast<IUnknown*>(pStream));
    VARIANT_BOOL wellFormed = VARIANT_FALSE;
    hr = loaded->load(source.Get(), &wellFormed);
    if (FAILED(hr)) return hr;
    if (wellFormed != VARIANT_TRUE) return E_FAIL;
    ticket = std::move(loaded);
    return S_OK;
}

}  // namespace

HRESULT CreateTicket(Ticket& ticket) {
    Ticket created;
    HRESULT hr = CoCreateInstance(platform::CLSID_DomDocument60, nullptr, CLSCTX_ALL,
                                  __uuidof(IXMLDOMDocument2), created.PutVoid());
    if (FAILED(hr)) return hr;
    hr = created->put_async(VARIANT_FALSE);
    if (FAILED(hr)) return hr;
    ticket = std::move(created);
    return S_OK;
}

HRESULT Rewind(IStream* pStream) { return pStream->Seek({}, STREAM_SEEK_SET, nullptr); }

HRESULT LoadTicket(IStream* pStream, Ticket& ticket) {
    const HRESULT hr = Rewind(pStream);
    return FAILED(hr) ? hr : Load(pStream, ticket);
}

HRESULT LoadTicket(IPrintReadStream* pStream, Ticket& ticket) {
    ComPtr<IStream> pAdapter;
    try {
        pAdapter = io::CreatePrintReadStreamToIStream(pStream);
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return LoadTicket(pAdapter.Get(), ticket);
}

HRESULT OpenTicketStream(IXMLDOMDocument2* pTicket, ComPtr<IStream>& stream) {
    const HRESULT hr = pTicket->QueryInterface(__uuidof(IStream), stream.PutVoid());
    if (SUCCEEDED(hr)) static_cast<void>(Rewind(stream.Get()));
    return hr;
}

HRESULT CopyTicket(IXMLDOMDocument2* pSource, Ticket& copy) {
    ComPtr<IStream> stream;
    const HRESULT hr = OpenTicketStream(pSource, stream);
    return FAILED(hr) ? hr : Load(stream.Get(), copy);
}

bool HasRootElement(IXMLDOMDocument2* pDocument) {
    ComPtr<IXMLDOMElement> root;
    return pDocument->get_documentElement(root.Put()) == S_OK && root;
}

}  // namespace base::xps::printschema
