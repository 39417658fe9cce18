#pragma once

#include "platform/windows.h"

#include <string>

#include "platform/comptr.h"
#include "platform/filterpipeline.h"
#include "platform/msxml6.h"

// How tickets get into documents and out of them. Failures are answered and not thrown. A ticket that is
// handed in is replaced by a success and stays what it was after a failure.
namespace base::xps::printschema {

// An empty document that loads synchronously.
[[nodiscard]] HRESULT CreateTicket(platform::ComPtr<IXMLDOMDocument2>& ticket);

[[nodiscard]] HRESULT Rewind(IStream* pStream);

// Loads a stream from its start. E_FAIL for what is not well formed; a stream that cannot be rewound fails
// with its own code.
[[nodiscard]] HRESULT LoadTicket(IStream* pStream, platform::ComPtr<IXMLDOMDocument2>& ticket);
// The same from where the stream stands.
[[nodiscard]] HRESULT LoadTicketFromHere(IStream* pStream, platform::ComPtr<IXMLDOMDocument2>& ticket);
// A pipeline stream as a document takes it. E_OUTOFMEMORY when it cannot be wrapped.
[[nodiscard]] HRESULT WrapTicketStream(IPrintReadStream* pStream, platform::ComPtr<IStream>& stream);

// All that a stream holds, from its start.
[[nodiscard]] HRESULT ReadTicketBytes(IStream* pStream, std::string& bytes);
[[nodiscard]] HRESULT LoadTicketBytes(const std::string& bytes, platform::ComPtr<IXMLDOMDocument2>& ticket);

// The stream that a document gives of itself. Nothing says that it can be rewound: a fresh one stands at its
// start, so one that refuses is used as it is.
[[nodiscard]] HRESULT OpenTicketStream(IXMLDOMDocument2* pTicket, platform::ComPtr<IStream>& stream);

// Loads a new document from the source's own stream.
[[nodiscard]] HRESULT CopyTicket(IXMLDOMDocument2* pSource, platform::ComPtr<IXMLDOMDocument2>& copy);

[[nodiscard]] bool HasRootElement(IXMLDOMDocument2* pDocument);

}  // namespace base::xps::printschema
