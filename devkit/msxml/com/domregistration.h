#pragma once

#include "platform/windows.h"

#include <unknwn.h>

#include <optional>

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

// A class object in COM's table, for every thread of the calling thread's apartment, while this lives. One of
// a class at a time in an apartment; the thread that made it destroys it, before it leaves COM.
class ClassRegistration {
  public:
    // Throws std::system_error with the HRESULT as its value when COM refuses the registration.
    ClassRegistration(REFCLSID clsid, IClassFactory& factory);
    ClassRegistration(const ClassRegistration&) = delete;
    ClassRegistration& operator=(const ClassRegistration&) = delete;
    ~ClassRegistration();

  private:
    DWORD m_cookie = 0;
};

// Lets CoCreateInstance of DOMDocument60 (CLSCTX_INPROC_SERVER or CLSCTX_ALL) give this library's document.
class DomRegistration {
  public:
    // Throws std::bad_alloc, and what ClassRegistration throws.
    DomRegistration();

  private:
    ClassRegistration m_registration;
};

// Lets CoCreateInstance of SAXXMLReader60 find the system's class object in COM's table. Wine looks it up in
// its registry otherwise, for each reader anew: a filter that rewrites pages makes one for each page.
class SaxRegistration {
  public:
    // Without a system's reader nothing is registered. Throws what ClassRegistration throws.
    SaxRegistration();

  private:
    std::optional<ClassRegistration> m_registration;
};

}  // namespace devkit::msxml
