#pragma once

#include <libxml/tree.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "devkit/common/limits.h"
#include "devkit/common/xmlsilence.h"

struct _xmlTextReader;  // NOLINT(bugprone-reserved-identifier): libxml2's name

namespace devkit::common {

struct XmlDocumentFree {
    void operator()(xmlDoc* pDocument) const noexcept { xmlFreeDoc(pDocument); }
};
using XmlDocument = std::unique_ptr<xmlDoc, XmlDocumentFree>;

// What becomes of a prefix that is not declared.
enum class Prefixes {
    Tolerated,  // it is part of the local name
    Declared,   // it is an error
};

// Walks over the elements of markup in document order. UTF-8 and UTF-16 are told apart by their first bytes;
// other encodings and document type declarations are refused, and nothing is ever fetched. Failures are
// XmlErrors. As long as it lives, the library prints nothing on its thread, on which it must also end; of
// several the last one ends first.
class XmlReader {
  public:
    // The bytes must outlive the reader. `where` names the markup in the errors.
    XmlReader(std::string_view bytes, std::string where, const XmlLimits& limits,
              Prefixes prefixes = Prefixes::Tolerated);
    ~XmlReader();

    // Goes to the start of the next element; false at the end of the markup.
    bool NextElement();

    // Of the current element. The root has depth 0.
    [[nodiscard]] int Depth() const;
    [[nodiscard]] std::string Namespace() const;
    [[nodiscard]] std::string LocalName() const;
    // An attribute in no namespace.
    [[nodiscard]] std::optional<std::string> Attribute(const char* name) const;
    // Its text, that of the elements in it included.
    [[nodiscard]] std::string Text() const;
    // The namespace that a prefix stands for; empty when there is none.
    [[nodiscard]] std::string NamespaceOf(const std::string& prefix) const;

  private:
    friend XmlDocument ParseXml(std::string_view bytes, const std::string& where, const XmlLimits& limits,
                                Prefixes prefixes);

    struct Delete {
        void operator()(_xmlTextReader* pReader) const noexcept;
    };
    // What the library complained of first.
    struct Complaint {
        std::string reason;
        int line = 0;
    };
    struct Complaints {
        Complaint fatal;
        Complaint undeclared;
        bool isDepth = false;
    };

    static void Note(void* pComplaints, struct _xmlError* pError);
    // Holds the current element to the limits, the first one to the encoding as well.
    void CheckElement();
    [[noreturn]] void Fail(const std::string& what) const;
    [[noreturn]] void FailAtDepth(int depth) const;
    [[noreturn]] void FailFor(const Complaint& complaint) const;

    // Not for each element: it asks the library for the thread's state a dozen times.
    XmlSilence m_silence;
    std::string m_where;
    XmlLimits m_limits;
    Prefixes m_prefixes;
    bool m_isEncodingChecked = false;
    Complaints m_complaints;
    std::unique_ptr<_xmlTextReader, Delete> m_reader;
};

// The whole markup as a tree of the library's, read as XmlReader reads it.
[[nodiscard]] XmlDocument ParseXml(std::string_view bytes, const std::string& where, const XmlLimits& limits,
                                   Prefixes prefixes = Prefixes::Declared);

// Text of the library's; a null pointer gives empty text.
[[nodiscard]] inline std::string_view View(const xmlChar* pText) noexcept {
    return pText == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(pText));
}
// Text for the library.
[[nodiscard]] inline const xmlChar* XmlText(const char* text) noexcept {
    return reinterpret_cast<const xmlChar*>(text);
}
// Text of the library's that its caller must release.
struct XmlTextFree {
    void operator()(xmlChar* pText) const noexcept { xmlFree(pText); }
};
using XmlTextPtr = std::unique_ptr<xmlChar, XmlTextFree>;

}  // namespace devkit::common
