#pragma once

#include "platform/windows.h"

#include <map>
#include <string>
#include <vector>

#include "base/xps/printschema/printticketprovider.h"
#include "platform/comptr.h"

namespace tests {

// A provider that hands out the documents that it was given, and E_PENDING where it was given none. It notes
// what it is asked for.
class StubTicketProvider : public base::xps::printschema::PrintTicketProvider {
  public:
    HRESULT GetTicket(EPrintTicketScope scope, IXMLDOMDocument2** ppTicket) override {
        scopes.push_back(scope);
        *ppTicket = platform::ComPtr<IXMLDOMDocument2>(tickets[scope]).Detach();
        return *ppTicket == nullptr ? E_PENDING : S_OK;
    }
    HRESULT GetPrintCapabilities(IXMLDOMDocument2* pTicket, IXMLDOMDocument2** ppCapabilities) override {
        pAskedTicket = platform::ComPtr<IXMLDOMDocument2>(pTicket);
        *ppCapabilities = platform::ComPtr<IXMLDOMDocument2>(pCapabilities).Detach();
        return *ppCapabilities == nullptr ? E_PENDING : S_OK;
    }

    std::map<EPrintTicketScope, platform::ComPtr<IXMLDOMDocument2>> tickets;
    platform::ComPtr<IXMLDOMDocument2> pCapabilities;
    std::vector<EPrintTicketScope> scopes;
    platform::ComPtr<IXMLDOMDocument2> pAskedTicket;
};

}  // namespace tests
