#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "devkit/msxml/errorcodes.h"
#include "devkit/msxml/namespacescope.h"
#include "devkit/msxml/node.h"

namespace devkit::msxml {

// A breach of a rule that the builder watches over. The place is where the parser stands.
struct BuildFailure {
    XmlError code;
    std::string detail;
};

// Builds a document's tree from a parser's events and applies the rules of XML namespaces. Names and values
// come as UTF-8, attributes with their declarations in document order. Throws BuildFailure and
// std::bad_alloc.
class TreeBuilder {
  public:
    // The document is empty, and its settings say what to keep and how deep it may be.
    explicit TreeBuilder(Document& document);

    struct RawAttribute {
        std::string_view name;
        std::string_view value;
    };

    void Declaration(std::string_view data);
    void StartElement(std::string_view name, const std::vector<RawAttribute>& attributes);
    void EndElement();
    void Characters(std::string_view text);
    void Cdata(std::string_view text);
    void Comment(std::string_view text);
    void Instruction(std::string_view target, std::string_view data);

  private:
    void FlushText();
    void Append(const NodeRef& pNode);
    void Declare(const RawAttribute& attribute);
    void AddAttributes(Node& element, const std::vector<RawAttribute>& attributes);
    [[nodiscard]] bool PreservesSpace(const std::vector<RawAttribute>& attributes) const;
    [[nodiscard]] const SharedName& ElementName(std::string_view qualified);
    [[nodiscard]] const SharedName& AttributeName(std::string_view qualified);
    [[nodiscard]] const SharedName& Intern(std::string_view qualified, std::string_view uri);

    struct KnownName {
        std::string uri;
        SharedName pName;
    };

    Document& m_document;
    NodeRef m_pCurrent;  // held, so that keeping a new node below it does not go up the whole tree
    std::string m_text;
    NamespaceScope<std::string, std::string_view> m_scope;
    std::vector<bool> m_preserves;  // for each open element and, first, the document
    std::unordered_map<std::string, std::vector<KnownName>> m_names;
};

}  // namespace devkit::msxml
