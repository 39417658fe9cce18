#include "devkit/printschema/xmlparser.h"

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <new>
#include <string>

#include "devkit/printschema/formaterror.h"

namespace devkit::prntvpt {
namespace {

struct ContextFree {
    void operator()(xmlParserCtxt* pContext) const noexcept { xmlFreeParserCtxt(pContext); }
};
using Context = std::unique_ptr<xmlParserCtxt, ContextFree>;

// Notes that there is a declaration, and ends the parsing before anything of it is read.
void RefuseDoctype(void* pParser, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto* const pContext = static_cast<xmlParserCtxt*>(pParser);
    *static_cast<bool*>(pContext->_private) = true;
    xmlStopParser(pContext);
}

[[nodiscard]] std::string Describe(xmlParserCtxt* pContext) {
    const xmlError* const pError = xmlCtxtGetLastError(pContext);
    if (pError == nullptr || pError->message == nullptr) return "not well-formed XML";
    std::string text = "line " + std::to_string(pError->line) + ": " + pError->message;
    text.erase(text.find_last_not_of(" \r\n") + 1);
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

[[nodiscard]] bool IsUnicodeEncoding(const xmlChar* pEncoding) {
    if (pEncoding == nullptr) return true;
    constexpr std::array<const char*, 5> Accepted{"UTF-8", "UTF8", "UTF-16", "UTF-16LE", "UTF-16BE"};
    return std::any_of(Accepted.begin(), Accepted.end(), [&](const char* name) {
        return xmlStrcasecmp(pEncoding, reinterpret_cast<const xmlChar*>(name)) == 0;
    });
}

}  // namespace

XmlDocument ParseXml(std::string_view bytes) {
    static std::once_flag initialized;
    std::call_once(initialized, xmlInitParser);

    if (bytes.empty()) throw FormatError("empty");
    if (bytes.size() > MaxDocumentSize) {
        throw FormatError("larger than " + std::to_string(MaxDocumentSize) + " bytes");
    }
    const Context context(xmlNewParserCtxt());
    if (!context) throw std::bad_alloc();
    bool hasDoctype = false;
    context->sax->internalSubset = RefuseDoctype;
    context->_private = &hasDoctype;
    XmlDocument document(xmlCtxtReadMemory(context.get(), bytes.data(), static_cast<int>(bytes.size()),
                                           nullptr, nullptr,
                                           XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
    if (hasDoctype) throw FormatError("document type declarations are not allowed");
    if (!document || context->wellFormed == 0 || context->nsWellFormed == 0) {
        throw FormatError(Describe(context.get()));
    }
    if (!IsUnicodeEncoding(document->encoding)) throw FormatError("neither UTF-8 nor UTF-16");
    return document;
}

}  // namespace devkit::prntvpt
