#include "base/xps/printschema/ticketdocument.h"

#include <array>
#include <utility>

#include "base/io/printreadstreamtoistream.h"
#include "platform/inorder.h"
#include "platform/variant.h"

namespace base::xps::printschema {

using platform::ComPtr;
using platform::InOrder;

using Ticket = ComPtr<IXMLDOMDocument2>;

HRESULT CreateTicket(Ticket& ticket) {
    Ticket created;
    const HRESULT hr = InOrder(
        [&] {
            return CoCreateInstance(platform::CLSID_DomDocument60, nullptr, CLSCTX_ALL,
                                    __uuidof(IXMLDOMDocument2), created.PutVoid());
        },
        [&] { return created->put_async(VARIANT_FALSE); });
    if (SUCCEEDED(hr)) ticket = std::move(created);
    return hr;
}

HRESULT Rewind(IStream* pStream) { return pStream->Seek({}, STREAM_SEEK_SET, nullptr); }

HRESULT LoadTicketFromHere(IStream* pStream, Ticket& ticket) {
    Ticket loaded;
    VARIANT_BOOL isWellFormed = VARIANT_FALSE;
    const platform::Variant source(static_cast<IUnknown*>(pStream));
    const HRESULT hr = InOrder([&] { return CreateTicket(loaded); },
                               [&] { return loaded->load(source.Get(), &isWellFormed); },
                               [&] { return isWellFormed == VARIANT_TRUE ? S_OK : E_FAIL; });
    if (SUCCEEDED(hr)) ticket = std::move(loaded);
    return hr;
}

HRESULT LoadTicket(IStream* pStream, Ticket& ticket) {
    return InOrder([&] { return Rewind(pStream); }, [&] { return LoadTicketFromHere(pStream, ticket); });
}

HRESULT WrapTicketStream(IPrintReadStream* pStream, ComPtr<IStream>& stream) {
    try {
        stream = io::CreatePrintReadStreamToIStream(pStream);
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT ReadTicketBytes(IStream* pStream, std::string& bytes) {
    const HRESULT rewound = Rewind(pStream);
    if (FAILED(rewound)) return rewound;
    std::string read;
    std::array<char, 8192> block;
    for (;;) {
        ULONG count = 0;
        const HRESULT hr = pStream->Read(block.data(), static_cast<ULONG>(block.size()), &count);
        if (FAILED(hr)) return hr;
        if (count == 0) break;
        read.append(block.data(), count);
    }
    bytes = std::move(read);
    return S_OK;
}

HRESULT LoadTicketBytes(const std::string& bytes, Ticket& ticket) {
    ComPtr<IStream> stream;
    return InOrder([&] { return CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()); },
                   [&] { return stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr); },
                   [&] { return LoadTicket(stream.Get(), ticket); });
}

HRESULT OpenTicketStream(IXMLDOMDocument2* pTicket, ComPtr<IStream>& stream) {
    const HRESULT hr = pTicket->QueryInterface(__uuidof(IStream), stream.PutVoid());
    if (SUCCEEDED(hr)) static_cast<void>(Rewind(stream.Get()));
    return hr;
}

HRESULT CopyTicket(IXMLDOMDocument2* pSource, Ticket& copy) {
    ComPtr<IStream> stream;
    return InOrder([&] { return OpenTicketStream(pSource, stream); },
                   [&] { return LoadTicketFromHere(stream.Get(), copy); });
}

bool HasRootElement(IXMLDOMDocument2* pDocument) {
    ComPtr<IXMLDOMElement> root;
    return pDocument->get_documentElement(root.Put()) == S_OK && root;
}

}  // namespace base::xps::printschema
