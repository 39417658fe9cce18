#pragma once

#include <libxml/xmlerror.h>

namespace devkit::common {

// Keeps the XML library from printing, on the calling thread, what it has nobody to tell of: it then knows no
// parser yet, or has no code for the error.
class XmlSilence {
  public:
    XmlSilence() noexcept
        : m_pMessages(xmlGenericErrorContext),
          m_messages(xmlGenericError),
          m_pErrors(xmlStructuredErrorContext),
          m_errors(xmlStructuredError) {
        xmlSetGenericErrorFunc(nullptr, IgnoreMessage);
        xmlSetStructuredErrorFunc(nullptr, IgnoreError);
    }
    XmlSilence(const XmlSilence&) = delete;
    XmlSilence& operator=(const XmlSilence&) = delete;
    ~XmlSilence() {
        xmlSetGenericErrorFunc(m_pMessages, m_messages);
        xmlSetStructuredErrorFunc(m_pErrors, m_errors);
    }

  private:
    static void IgnoreMessage(void*, const char*, ...) {}
    static void IgnoreError(void*, xmlErrorPtr) {}

    void* const m_pMessages;
    const xmlGenericErrorFunc m_messages;
    void* const m_pErrors;
    const xmlStructuredErrorFunc m_errors;
};

}  // namespace devkit::common
