#include "devkit/common/xmlwriter.h"

#include <libxml/xmlwriter.h>

#include <new>

#include "devkit/common/xmlreader.h"

namespace devkit::common {
namespace {

// The library reports nothing else: what is written in the wrong place is a mistake of the caller's.
void CheckWritten(int result) {
    if (result < 0) throw std::bad_alloc();
}

}  // namespace

void XmlWriter::FreeBuffer::operator()(_xmlBuffer* pBuffer) const noexcept { xmlBufferFree(pBuffer); }

void XmlWriter::FreeWriter::operator()(_xmlTextWriter* pWriter) const noexcept { xmlFreeTextWriter(pWriter); }

XmlWriter::XmlWriter(Declaration declaration) : m_buffer(xmlBufferCreate()) {
    if (!m_buffer) throw std::bad_alloc();
    m_writer.reset(xmlNewTextWriterMemory(m_buffer.get(), 0));
    if (!m_writer) throw std::bad_alloc();
    // Without a declared encoding the library would write references for all that is not ASCII.
    CheckWritten(xmlTextWriterStartDocument(m_writer.get(), nullptr, "UTF-8", nullptr));
    if (declaration == Declaration::Written) return;
    CheckWritten(xmlTextWriterFlush(m_writer.get()));
    xmlBufferEmpty(m_buffer.get());
}

XmlWriter::~XmlWriter() = default;

void XmlWriter::StartElement(const std::string& name) {
    CheckWritten(xmlTextWriterStartElement(m_writer.get(), XmlText(name.c_str())));
}

void XmlWriter::EndElement() { CheckWritten(xmlTextWriterEndElement(m_writer.get())); }

void XmlWriter::Attribute(const std::string& name, std::string_view value) {
    CheckWritten(xmlTextWriterWriteAttribute(m_writer.get(), XmlText(name.c_str()),
                                             XmlText(std::string(value).c_str())));
}

void XmlWriter::Text(std::string_view text) {
    CheckWritten(xmlTextWriterWriteString(m_writer.get(), XmlText(std::string(text).c_str())));
}

void XmlWriter::Comment(std::string_view text) {
    CheckWritten(xmlTextWriterWriteComment(m_writer.get(), XmlText(std::string(text).c_str())));
}

void XmlWriter::Instruction(const std::string& target, std::string_view text) {
    const std::string content(text);
    CheckWritten(xmlTextWriterWritePI(m_writer.get(), XmlText(target.c_str()),
                                      content.empty() ? nullptr : XmlText(content.c_str())));
}

void XmlWriter::Raw(std::string_view markup) {
    CheckWritten(xmlTextWriterWriteRaw(m_writer.get(), XmlText(std::string(markup).c_str())));
}

std::string XmlWriter::Take() {
    while (xmlTextWriterEndElement(m_writer.get()) >= 0) {
    }
    CheckWritten(xmlTextWriterFlush(m_writer.get()));
    return {reinterpret_cast<const char*>(xmlBufferContent(m_buffer.get())),
            static_cast<std::size_t>(xmlBufferLength(m_buffer.get()))};
}

}  // namespace devkit::common
