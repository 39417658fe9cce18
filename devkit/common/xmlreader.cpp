#include "devkit/common/xmlreader.h"

#include <libxml/encoding.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlreader.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <utility>

#include "devkit/common/error.h"
#include "devkit/common/text.h"

namespace devkit::common {
namespace {

constexpr int kLibraryMaxDepth = 256;

std::string OneLine(std::string_view text) {
    std::string line(text);
    line.erase(line.find_last_not_of("\r\n. ") + 1);
    std::ranges::replace(line, '\n', ' ');
    return line;
}

// Looks at what stands before the root element, up to a document type declaration, of which nothing is read.
class Prolog {
  public:
    [[nodiscard]] static bool HasDocumentType(std::string_view bytes) {
        constexpr std::size_t kStep = 1'024;
        Prolog prolog;
        xmlSAXHandler handler{};
        handler.internalSubset = [](void* pSelf, const xmlChar*, const xmlChar*, const xmlChar*) {
            static_cast<Prolog*>(pSelf)->End(true);
        };
        handler.startElement = [](void* pSelf, const xmlChar*, const xmlChar**) {
            static_cast<Prolog*>(pSelf)->End(false);
        };
        const std::string_view first = bytes.substr(0, kStep);
        const std::unique_ptr<xmlParserCtxt, Free> parser(xmlCreatePushParserCtxt(
            &handler, &prolog, first.data(), static_cast<int>(first.size()), nullptr));
        if (!parser) throw std::bad_alloc();
        xmlCtxtUseOptions(parser.get(), XML_PARSE_NONET);
        prolog.m_pParser = parser.get();
        // What is not well-formed is for the reader to complain of.
        int error = xmlParseChunk(parser.get(), nullptr, 0, 0);
        for (std::size_t at = kStep; at < bytes.size() && error == 0 && !prolog.m_isOver; at += kStep) {
            const std::string_view next = bytes.substr(at, kStep);
            error = xmlParseChunk(parser.get(), next.data(), static_cast<int>(next.size()), 0);
        }
        return prolog.m_hasDocumentType;
    }

  private:
    struct Free {
        void operator()(xmlParserCtxt* pParser) const noexcept { xmlFreeParserCtxt(pParser); }
    };

    void End(bool hasDocumentType) {
        m_isOver = true;
        m_hasDocumentType = hasDocumentType;
        xmlStopParser(m_pParser);
    }

    xmlParserCtxt* m_pParser = nullptr;
    bool m_isOver = false;
    bool m_hasDocumentType = false;
};

bool IsUnicodeEncoding(std::string_view name) {
    constexpr std::array<std::string_view, 5> kNames{"UTF-8", "UTF8", "UTF-16", "UTF-16LE", "UTF-16BE"};
    return name.empty() || std::ranges::any_of(kNames, [name](std::string_view each) {
               return EqualIgnoringCase(each, name);
           });
}

// Of a code unit of the text.
enum class Width { Narrow, Wide, Unknown };

// By its first bytes. Of those that it cannot read the library complains on the console, before it knows whom
// else to tell.
Width WidthOf(std::string_view bytes) {
    const auto* const pBytes = reinterpret_cast<const unsigned char*>(bytes.data());
    switch (xmlDetectCharEncoding(pBytes, static_cast<int>(std::min<std::size_t>(bytes.size(), 4)))) {
        case XML_CHAR_ENCODING_NONE:
        case XML_CHAR_ENCODING_UTF8:
            return Width::Narrow;
        case XML_CHAR_ENCODING_UTF16LE:
        case XML_CHAR_ENCODING_UTF16BE:
            return Width::Wide;
        default:
            return Width::Unknown;
    }
}

}  // namespace

void XmlReader::Delete::operator()(_xmlTextReader* pReader) const noexcept { xmlFreeTextReader(pReader); }

XmlReader::XmlReader(std::string_view bytes, std::string where, const XmlLimits& limits, Prefixes prefixes)
    : m_where(std::move(where)), m_limits(limits), m_prefixes(prefixes) {
    constexpr std::size_t kLibraryMaxBytes = std::numeric_limits<int>::max();
    if (bytes.empty()) Fail("is empty");
    const std::size_t most = std::min(m_limits.maxBytes, kLibraryMaxBytes);
    if (bytes.size() > most) Fail("is larger than " + std::to_string(most) + " bytes");
    const Width width = WidthOf(bytes);
    if (width == Width::Unknown) Fail("is encoded as neither UTF-8 nor UTF-16");
    // 8-bit text has none, and where its declaration names UTF-16 the library would go on in that.
    const bool hasZero = width == Width::Narrow && bytes.find('\0') != std::string_view::npos;
    if (hasZero) Fail("has a byte of zero in text of 8 bits");
    if (Prolog::HasDocumentType(bytes)) Fail("has a document type declaration");
    m_reader.reset(xmlReaderForMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                                      XML_PARSE_NONET | XML_PARSE_COMPACT));
    if (!m_reader) throw std::bad_alloc();
    xmlTextReaderSetStructuredErrorHandler(m_reader.get(), &Note, &m_complaints);
}

XmlReader::~XmlReader() = default;

void XmlReader::Note(void* pComplaints, xmlErrorPtr pError) {
    auto& complaints = *static_cast<Complaints*>(pComplaints);
    if (pError == nullptr || pError->message == nullptr) return;
    const bool isUndeclared = pError->domain == XML_FROM_NAMESPACE && pError->level >= XML_ERR_ERROR;
    if (!isUndeclared && pError->level != XML_ERR_FATAL) return;
    Complaint& complaint = isUndeclared ? complaints.undeclared : complaints.fatal;
    if (!complaint.reason.empty()) return;
    complaint.reason = OneLine(pError->message);
    complaint.line = pError->line;
    if (complaint.reason.find("Excessive depth") != std::string::npos) complaints.isDepth = true;
    // To the library, what breaks off and what goes on behind the root are one and the same error.
    const auto* const pParser = static_cast<const xmlParserCtxt*>(pError->ctxt);
    if (pError->code != XML_ERR_DOCUMENT_END || pParser == nullptr || pParser->instate == XML_PARSER_EPILOG)
        return;
    complaint.reason = pParser->nameNr == 0
                           ? "The markup breaks off"
                           : "The markup ends inside the element " + std::string(View(pParser->name));
}

bool XmlReader::NextElement() {
    for (;;) {
        const int result = xmlTextReaderRead(m_reader.get());
        if (m_prefixes == Prefixes::Declared && !m_complaints.undeclared.reason.empty())
            FailFor(m_complaints.undeclared);
        if (result == 0) return false;
        // libxml2 parses ahead of the reader, so that its own limit can strike before that of the caller.
        if (result < 0 && m_complaints.isDepth) FailAtDepth(kLibraryMaxDepth);
        if (result < 0) FailFor(m_complaints.fatal);
        if (xmlTextReaderNodeType(m_reader.get()) != XML_READER_TYPE_ELEMENT) continue;
        CheckElement();
        return true;
    }
}

void XmlReader::CheckElement() {
    if (Depth() >= m_limits.maxDepth) FailAtDepth(m_limits.maxDepth);
    if (xmlTextReaderAttributeCount(m_reader.get()) > m_limits.maxAttributes)
        Fail("has an element with more than " + std::to_string(m_limits.maxAttributes) + " attributes");
    if (std::exchange(m_isEncodingChecked, true)) return;
    const std::string_view encoding = View(xmlTextReaderConstEncoding(m_reader.get()));
    if (!IsUnicodeEncoding(encoding))
        Fail("is encoded as " + std::string(encoding) + ", neither UTF-8 nor UTF-16");
}

void XmlReader::Fail(const std::string& what) const { throw XmlError(what, m_where); }

void XmlReader::FailAtDepth(int depth) const {
    Fail("nests more than " + std::to_string(depth) + " elements");
}

void XmlReader::FailFor(const Complaint& complaint) const {
    // Of bytes that it cannot convert the library tells nobody.
    if (complaint.reason.empty()) Fail("cannot be decoded");
    throw XmlError(
        "is not well-formed XML (line " + std::to_string(complaint.line) + ": " + complaint.reason + ")",
        m_where, complaint.line);
}

int XmlReader::Depth() const { return xmlTextReaderDepth(m_reader.get()); }

std::string XmlReader::Namespace() const {
    return std::string(View(xmlTextReaderConstNamespaceUri(m_reader.get())));
}

std::string XmlReader::LocalName() const {
    return std::string(View(xmlTextReaderConstLocalName(m_reader.get())));
}

std::optional<std::string> XmlReader::Attribute(const char* name) const {
    const XmlTextPtr value(xmlTextReaderGetAttributeNs(m_reader.get(), XmlText(name), nullptr));
    // libxml2 2.9 finds attributes without a namespace by their plain name alone.
    const XmlTextPtr plain(value ? nullptr : xmlTextReaderGetAttribute(m_reader.get(), XmlText(name)));
    if (!value && !plain) return std::nullopt;
    return std::string(View(value ? value.get() : plain.get()));
}

std::string XmlReader::Text() const {
    const XmlTextPtr text(xmlTextReaderReadString(m_reader.get()));
    return std::string(View(text.get()));
}

std::string XmlReader::NamespaceOf(const std::string& prefix) const {
    const XmlTextPtr uri(xmlTextReaderLookupNamespace(m_reader.get(), XmlText(prefix.c_str())));
    return std::string(View(uri.get()));
}

XmlDocument ParseXml(std::string_view bytes, const std::string& where, const XmlLimits& limits,
                     Prefixes prefixes) {
    XmlReader reader(bytes, where, limits, prefixes);
    if (reader.NextElement()) {
        // From here on the library keeps what it has read.
        xmlTextReaderPreserve(reader.m_reader.get());
        while (reader.NextElement()) {
        }
    }
    return XmlDocument(xmlTextReaderCurrentDoc(reader.m_reader.get()));
}

}  // namespace devkit::common
