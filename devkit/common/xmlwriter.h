#pragma once

#include <memory>
#include <string>
#include <string_view>

struct _xmlBuffer;      // NOLINT(bugprone-reserved-identifier): libxml2's name
struct _xmlTextWriter;  // NOLINT(bugprone-reserved-identifier): libxml2's name

namespace devkit::common {

// Writes markup in UTF-8, escaping what its place demands. Elements are closed by EndElement, or all of them
// by Take. An element without content is written in the short form. std::bad_alloc when there is no memory.
class XmlWriter {
  public:
    enum class Declaration { Written, None };

    explicit XmlWriter(Declaration declaration = Declaration::Written);
    ~XmlWriter();

    // Names are written as they come, with their prefixes.
    void StartElement(const std::string& name);
    void EndElement();
    // Of the element that was started last, before its content.
    void Attribute(const std::string& name, std::string_view value);
    void Text(std::string_view text);
    void Comment(std::string_view text);
    void Instruction(const std::string& target, std::string_view text);
    // As it is, between elements or in their content: white space that makes the markup readable.
    void Raw(std::string_view markup);

    // The whole markup. The writer is done for.
    [[nodiscard]] std::string Take();

  private:
    struct FreeBuffer {
        void operator()(_xmlBuffer* pBuffer) const noexcept;
    };
    struct FreeWriter {
        void operator()(_xmlTextWriter* pWriter) const noexcept;
    };

    std::unique_ptr<_xmlBuffer, FreeBuffer> m_buffer;  // outlives the writer
    std::unique_ptr<_xmlTextWriter, FreeWriter> m_writer;
};

}  // namespace devkit::common
