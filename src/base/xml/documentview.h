#pragma once

#include "platform/windows.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/xml/xmlnodecomparator.h"
#include "platform/comptr.h"
#include "platform/msxml6.h"

namespace base::xml {

// The prefix declarations of an element: attribute name to URI, in the order of the names.
using Declarations = std::map<std::wstring, std::wstring>;

// A node as far as it has been looked at: what the DOM has said of it once it is not asked again. So nothing
// else may change the node meanwhile. A failing DOM call throws HresultError, and what it was to tell is
// asked again the next time.
class NodeView {
  public:
    // Null is what a list has instead of a node that it does not yield; such a view can only be tested.
    explicit NodeView(platform::ComPtr<IXMLDOMNode> pNode) noexcept : m_pNode(std::move(pNode)) {}

    explicit operator bool() const noexcept { return static_cast<bool>(m_pNode); }
    [[nodiscard]] IXMLDOMNode* Get() const noexcept { return m_pNode.Get(); }

    [[nodiscard]] bool HasChildren();
    [[nodiscard]] std::vector<NodeView>& Children();
    // What the comparator makes of the node; a view is used with one comparator.
    [[nodiscard]] const std::optional<std::wstring>& KeyBy(const XmlNodeComparator& comparator);

    // A node without attributes has none, and so has one whose attributes cannot be had.
    [[nodiscard]] const Declarations& GetDeclarations();
    // Adds declarations or replaces them. One that the DOM refuses is left out: it may be in force already.
    void Declare(IXMLDOMDocument2* pDocument, const Declarations& declarations);

    // With everything below it.
    [[nodiscard]] NodeView Clone() const;
    // Behind the last child.
    void Append(NodeView child);

  private:
    platform::ComPtr<IXMLDOMNode> m_pNode;
    std::optional<bool> m_hasChildren;
    std::optional<std::vector<NodeView>> m_children;
    bool m_isKeyRead = false;
    std::optional<std::wstring> m_key;
    bool m_areDeclarationsRead = false;
    Declarations m_declarations;
};

// A document that takes part in several merges.
class DocumentView {
  public:
    // Not null.
    explicit DocumentView(IXMLDOMDocument2* pDocument)
        : m_pDocument(pDocument), m_node(platform::ComPtr<IXMLDOMNode>(pDocument)) {}

    [[nodiscard]] IXMLDOMDocument2* Document() const noexcept { return m_pDocument.Get(); }
    [[nodiscard]] NodeView& Node() noexcept { return m_node; }

  private:
    platform::ComPtr<IXMLDOMDocument2> m_pDocument;
    NodeView m_node;
};

}  // namespace base::xml
