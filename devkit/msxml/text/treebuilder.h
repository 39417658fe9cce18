#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "devkit/msxml/text/namespacescope.h"
#include "devkit/msxml/tree/node.h"
#include "devkit/msxml/tree/xmlerror.h"

namespace devkit::msxml {

// A breach of a rule that the builder watches over. The place is where the parser stands.
struct BuildFailure {
    XmlError code;
    std::string reason;
};

// Builds a document's tree from a parser's events and applies the rules of XML namespaces. Names and values
// come as UTF-8, attributes with their declarations in document order. Throws BuildFailure and
// std::bad_alloc.
class TreeBuilder {
  public:
    // The document is empty. A depth of 0 is no limit.
    TreeBuilder(Document& document, long maxElementDepth);

    struct RawAttribute {
        std::string_view name;
        std::string_view value;
    };

    void Declaration(std::string_view data);
    void StartElement(std::string_view name, const std::vector<RawAttribute>& attributes);
    void EndElement();
    void Characters(std::string_view text) { m_text += text; }
    void Cdata(std::string_view text);
    void Comment(std::string_view text);
    void Instruction(std::string_view target, std::string_view data);

  private:
    // A qualified name that has come up, with its meaning in each namespace that it stood for.
    struct KnownName {
        std::string prefix;
        bool isDeclaration;
        std::vector<std::pair<std::string, SharedName>> byUri;
    };
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>()(text);
        }
    };

    void FlushText();
    void Append(const NodeRef& pNode);
    void Declare(const RawAttribute& attribute);
    void AddAttributes(Node& element, const std::vector<RawAttribute>& attributes);
    [[nodiscard]] bool PreservesSpace(const std::vector<RawAttribute>& attributes) const;
    [[nodiscard]] KnownName& Known(std::string_view qualified);
    [[nodiscard]] const SharedName& ElementName(std::string_view qualified);
    [[nodiscard]] const SharedName& AttributeName(std::string_view qualified);
    [[nodiscard]] static const SharedName& Intern(KnownName& known, std::string_view qualified,
                                                  std::string_view uri);

    Document& m_document;
    long m_maxElementDepth;
    NodeRef m_pCurrent;  // held, so that keeping a new node below it does not go up the whole tree
    std::string m_text;
    bool m_hasDroppedSpace = false;
    NamespaceScope<std::string, std::string_view> m_scope;
    std::vector<bool> m_preserves;  // for each open element and, first, the document
    std::unordered_map<std::string, KnownName, Hash, std::equal_to<>> m_names;
};

}  // namespace devkit::msxml
