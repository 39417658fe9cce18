#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "devkit/package/limits.h"

struct _xmlTextReader;

namespace devkit::package {

// Walks over the elements of a markup part in document order. UTF-8 and UTF-16 are told apart by their first
// bytes. There are no document type declarations and nothing is ever fetched. Failures are PackageErrors that
// name the part.
class XmlReader {
  public:
    // The bytes must outlive the reader.
    XmlReader(std::string_view bytes, std::string where, const Limits& limits);
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
    struct Delete {
        void operator()(_xmlTextReader* pReader) const noexcept;
    };

    [[noreturn]] void Fail() const;
    [[noreturn]] void FailAtDepth(int depth) const;

    std::string m_where;
    int m_maxDepth;
    std::string m_failure;
    std::unique_ptr<_xmlTextReader, Delete> m_reader;
};

}  // namespace devkit::package
