#pragma once

#include <libxml/tree.h>

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "devkit/msxml/tree/node.h"

namespace devkit::msxml {

// UTF-8 as the XML library takes it.
[[nodiscard]] inline const xmlChar* Chars(const std::string& text) noexcept {
    return reinterpret_cast<const xmlChar*>(text.c_str());
}

// A copy of a tree in the form that the XML library's XPath works on. It is good until the document changes.
class QueryTree {
  public:
    // The root is a document, or a node without a parent, which then stands below a document that is no node.
    explicit QueryTree(Node& root);

    [[nodiscard]] bool IsCurrent(const Node& root) const noexcept;
    [[nodiscard]] xmlDoc* LibraryDocument() const noexcept { return m_pDocument.get(); }
    // For a node of the tree that was built last for its document. Null for what XPath does not see: XML
    // declarations, entity references, attributes without an element and the text in an attribute.
    [[nodiscard]] static xmlNode* LibraryNodeOf(const Node& node) noexcept;
    // Null for the document above a root that is none.
    [[nodiscard]] static Node* NodeOf(const xmlNode& node) noexcept;

  private:
    struct Free {
        void operator()(xmlDoc* p) const noexcept { xmlFreeDoc(p); }
    };

    void Add(Node& node);
    [[nodiscard]] xmlNode* Copy(const Node& node);
    void AddAttributes(const Node& element, xmlNode& copy);
    [[nodiscard]] xmlNs* Namespace(const Name& name);
    [[nodiscard]] xmlNode* LibraryRoot() const noexcept {
        return reinterpret_cast<xmlNode*>(m_pDocument.get());
    }

    const Node* m_pRoot;
    unsigned long long m_changes;
    std::unique_ptr<xmlDoc, Free> m_pDocument;
    std::map<std::pair<std::wstring, std::wstring>, xmlNs*>
        m_namespaces;  // by prefix and URI, owned by the document
    xmlNs* m_pLastNamespace = nullptr;
};

}  // namespace devkit::msxml
