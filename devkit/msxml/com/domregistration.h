#pragma once

#include "platform/windows.h"

#include <unknwn.h>

#include "platform/comptr.h"

namespace devkit::msxml {

// Whether the system's own DOMDocument60 does what is documented and what users of XML in print filters rely
// on: it yields IStream and can be read and filled through it, and its attribute maps show namespace
// declarations through nextNode and getNamedItem. False as well when it cannot be created. Creates the
// system's class by its in-process server, so a DomRegistration that is in force is not mistaken for it. The
// calling thread must have entered COM.
[[nodiscard]] bool SystemDomConforms() noexcept;

// The class object of this library's document, which cannot be aggregated (CLASS_E_NOAGGREGATION). Throws
// std::bad_alloc.
[[nodiscard]] platform::ComPtr<IClassFactory> MakeDomClassObject();

// Lets CoCreateInstance of DOMDocument60 (CLSCTX_INPROC_SERVER or CLSCTX_ALL) give this library's document to
// every thread of the calling thread's apartment while it lives. One at a time in an apartment; the thread
// that made it destroys it, before it leaves COM.
class DomRegistration {
  public:
    // Throws std::system_error with the HRESULT as its value when COM refuses the registration.
    DomRegistration();
    DomRegistration(const DomRegistration&) = delete;
    DomRegistration& operator=(const DomRegistration&) = delete;
    ~DomRegistration();

  private:
    DWORD m_cookie = 0;
};

}  // namespace devkit::msxml
