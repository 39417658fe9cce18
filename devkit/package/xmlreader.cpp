#include "devkit/package/xmlreader.h"

#include <libxml/xmlerror.h>
#include <libxml/xmlreader.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "devkit/package/packageerror.h"
#include "devkit/package/xmltext.h"

namespace devkit::package {

namespace {

constexpr int kLibraryMaxDepth = 256;

// Keeps the first error as one line. Only errors that libxml2 itself cannot read past end the reading.
void KeepFirst(void* pText, xmlErrorPtr pError) {
    auto& text = *static_cast<std::string*>(pText);
    if (!text.empty() || pError == nullptr || pError->message == nullptr) return;
    text = "line " + std::to_string(pError->line) + ": " + pError->message;
    text.erase(text.find_last_not_of("\r\n. ") + 1);
}

}  // namespace

void XmlReader::Delete::operator()(_xmlTextReader* pReader) const noexcept { xmlFreeTextReader(pReader); }

XmlReader::XmlReader(std::string_view bytes, std::string where, const Limits& limits)
    : m_where(std::move(where)), m_maxDepth(limits.maxDepth) {
    if (bytes.empty()) throw PackageError("is empty", m_where);
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw PackageError("is too large for markup", m_where);
    m_reader.reset(xmlReaderForMemory(bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr,
                                      XML_PARSE_NONET | XML_PARSE_COMPACT));
    if (!m_reader) throw PackageError("cannot be parsed", m_where);
    xmlTextReaderSetStructuredErrorHandler(m_reader.get(), &KeepFirst, &m_failure);
}

XmlReader::~XmlReader() = default;

bool XmlReader::NextElement() {
    for (;;) {
        const int result = xmlTextReaderRead(m_reader.get());
        if (result == 0) return false;
        if (result < 0) Fail();
        const int type = xmlTextReaderNodeType(m_reader.get());
        if (type == XML_READER_TYPE_DOCUMENT_TYPE)
            throw PackageError("has a document type declaration", m_where);
        if (type != XML_READER_TYPE_ELEMENT) continue;
        if (Depth() >= m_maxDepth) FailAtDepth(m_maxDepth);
        return true;
    }
}

void XmlReader::Fail() const {
    // libxml2 parses ahead of the reader, so that its own limit can strike before that of the caller.
    if (m_failure.find("Excessive depth") != std::string::npos) FailAtDepth(kLibraryMaxDepth);
    throw PackageError("is not well-formed XML (" + m_failure + ")", m_where);
}

void XmlReader::FailAtDepth(int depth) const {
    throw PackageError("nests more than " + std::to_string(depth) + " elements", m_where);
}

int XmlReader::Depth() const { return xmlTextReaderDepth(m_reader.get()); }

std::string XmlReader::Namespace() const { return TextOf(xmlTextReaderConstNamespaceUri(m_reader.get())); }

std::string XmlReader::LocalName() const { return TextOf(xmlTextReaderConstLocalName(m_reader.get())); }

std::optional<std::string> XmlReader::Attribute(const char* name) const {
    const XmlTextPtr value(xmlTextReaderGetAttributeNs(m_reader.get(), XmlText(name), nullptr));
    // libxml2 2.9 finds attributes without a namespace by their plain name alone.
    const XmlTextPtr plain(value ? nullptr : xmlTextReaderGetAttribute(m_reader.get(), XmlText(name)));
    if (!value && !plain) return std::nullopt;
    return TextOf(value ? value.get() : plain.get());
}

std::string XmlReader::Text() const {
    const XmlTextPtr text(xmlTextReaderReadString(m_reader.get()));
    return TextOf(text.get());
}

std::string XmlReader::NamespaceOf(const std::string& prefix) const {
    const XmlTextPtr uri(xmlTextReaderLookupNamespace(m_reader.get(), XmlText(prefix.c_str())));
    return TextOf(uri.get());
}

}  // namespace devkit::package
